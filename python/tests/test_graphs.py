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
