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
