"""Graph views of a net."""
import pytest

import ravelo
from conftest import EXAMPLES


def test_networkx_view_has_every_node_and_link(asia):
    nx = pytest.importorskip("networkx")
    graph = asia.to_networkx()
    assert isinstance(graph, nx.DiGraph)
    assert sorted(graph.nodes) == sorted(n.name for n in asia.nodes)
    assert set(graph.edges) == {(p.name, n.name) for n in asia.nodes for p in n.parents}
    assert graph.nodes["xray"]["states"] == ["yes", "no"] and graph.nodes["xray"]["kind"] == "nature"
    assert list(nx.topological_sort(graph))[0] in ("asia", "smoke")


def test_pictures_show_belief_bars_once_compiled(tmp_path):
    import shutil
    import xml.etree.ElementTree as ElementTree

    if shutil.which("dot") is None:
        pytest.skip("Graphviz is not installed")
    net = ravelo.read(EXAMPLES / "asia.dne")
    net["tub"].title = "Tuberculosis <&>"
    plain = net._repr_svg_()
    assert "Tuberculosis &lt;&amp;&gt;" in plain and "99.0" not in plain
    net.compile()
    net["xray"].finding = "yes"
    net.draw(tmp_path / "asia.svg")
    svg = ElementTree.parse(tmp_path / "asia.svg").getroot()
    texts = [t.text for t in svg.iter("{http://www.w3.org/2000/svg}text")]
    assert "Tuberculosis <&>" in texts and "dysp" in texts
    assert "9.2" in texts and "100.0" in texts  # tub's yes, and the finding on xray
    net.draw(tmp_path / "asia.png")
    assert (tmp_path / "asia.png").read_bytes()[:4] == b"\x89PNG"


def test_the_tour_example_runs():
    import runpy

    pytest.importorskip("pandas")
    pytest.importorskip("networkx")
    runpy.run_path(str(EXAMPLES / "python" / "tour.py"), run_name="__main__")


def test_pgmpy_exchange_keeps_structure_and_tables(asia):
    pytest.importorskip("pgmpy")
    import numpy as np

    model = asia.to_pgmpy()
    assert set(model.edges()) == {(p.name, n.name) for n in asia.nodes for p in n.parents}
    back = ravelo.from_pgmpy(model)
    for node in asia.nodes:
        assert back[node.name].states == node.states
        np.testing.assert_allclose(back[node.name].cpt, node.cpt, atol=1e-6)


def test_pgmpy_exchange_without_pgmpy_says_what_is_missing(asia):
    try:
        import pgmpy  # noqa: F401
        pytest.skip("pgmpy is installed")
    except ImportError:
        pass
    with pytest.raises(ImportError, match="needs pgmpy installed"):
        asia.to_pgmpy()
