"""Reading and writing nets, building them node by node, and their tables as numpy arrays."""
import numpy as np
import pytest

import ravelo
from conftest import EXAMPLES, TEST_DATA


def same_net(a, b):
    assert [n.name for n in a.nodes] == [n.name for n in b.nodes]
    for x in a.nodes:
        y = b[x.name]
        assert x.states == y.states
        assert [p.name for p in x.parents] == [p.name for p in y.parents]
        np.testing.assert_allclose(x.cpt, y.cpt, atol=1e-6)


@pytest.mark.parametrize("extension", ["dne", "bif", "xmlbif", "net", "uai"])
def test_every_format_writes_and_reads_back_the_same_net(tmp_path, extension):
    net = ravelo.read(EXAMPLES / "child.dne")
    path = tmp_path / f"child.{extension}"
    net.write(path)
    again = ravelo.read(str(path))
    if extension == "uai":  # UAI keeps no names
        assert [n.num_states for n in again.nodes] == [n.num_states for n in net.nodes]
    else:
        same_net(net, again)
        assert again.file_name.endswith(f"child.{extension}")
    same_net(net, ravelo.loads(net.dumps("dne")))


@pytest.mark.parametrize("name, nodes", [("alarm.bifxml", 37), ("alarm.net", 37), ("asia.uai", 8),
                                         ("benefits.xdsl", None)])
def test_foreign_files_read(name, nodes):
    net = ravelo.read(TEST_DATA / name)
    assert len(net) == (nodes if nodes is not None else len(net.nodes)) > 0
    net.compile()
    for node in net:
        if node.kind == "nature":
            assert node.beliefs.sum() == pytest.approx(1, abs=1e-5)


def test_broken_and_missing_files_raise_the_engine_report(tmp_path):
    with pytest.raises(ravelo.Error) as caught:
        ravelo.read(TEST_DATA / "faulty.bif")
    assert caught.value.number > 0 and caught.value.severity == "error"
    assert "sum of probabilities isn't 1 (100%) (line 4 of" in caught.value.message
    assert str(caught.value) == caught.value.message
    with pytest.raises(ravelo.Error):
        ravelo.read(tmp_path / "absent.dne")
    with pytest.raises(ravelo.Error, match="no table"):
        ravelo.read(TEST_DATA / "untabled.dne").write(tmp_path / "refused.uai")
    assert not (tmp_path / "refused.uai").exists()


def test_cpt_axes_are_the_parents_in_order_then_the_node():
    net = ravelo.Net("Axes")
    a = net.add_node("A", ["a0", "a1"])
    b = net.add_node("B", ["b0", "b1", "b2"])
    c = net.add_node("C", ["c0", "c1"], parents=["B", a])
    assert c.parents == [b, a]
    rng = np.random.default_rng(7)
    table = rng.dirichlet([1, 1], size=(3, 2)).astype(np.float32)
    c.cpt = table
    np.testing.assert_allclose(c.cpt, table, atol=1e-7)
    a.cpt, b.cpt = [0.5, 0.5], [0.2, 0.3, 0.5]
    net.compile()
    # The beliefs of C under hard findings on its parents must be the matching row.
    for i in range(3):
        for j in range(2):
            b.finding, a.finding = i, f"a{j}"
            np.testing.assert_allclose(c.beliefs, table[i, j], atol=1e-6)


def test_refused_tables_leave_the_old_one():
    net = ravelo.read(EXAMPLES / "asia.dne")
    either = net["either"]
    before = either.cpt
    bad = before.copy()
    bad[1, 0] = [0.7, 0.7]  # a later row fails after earlier rows were written
    with pytest.raises(ravelo.Error) as caught:
        either.cpt = bad
    assert caught.value.number == 3072 and "sum of probabilities isn't 1" in caught.value.message
    np.testing.assert_array_equal(either.cpt, before)
    with pytest.raises(ValueError, match=r"shape \(2, 2, 2\), not \(2, 2\)"):
        either.cpt = before[0]
    np.testing.assert_array_equal(either.cpt, before)
    fresh = net.add_node("fresh", ["x", "y"], parents=["asia"])
    with pytest.raises(ravelo.Error):
        fresh.cpt = [[0.5, 0.5], [1.5, -0.5]]
    assert fresh.cpt is None
    either.cpt = None
    assert either.cpt is None


def test_failed_node_additions_leave_the_net_as_it_was():
    net = ravelo.read(EXAMPLES / "asia.dne")
    names = [n.name for n in net]
    with pytest.raises(KeyError, match="no node 'nope'"):
        net.add_node("extra", ["x", "y"], parents=["asia", "nope"])
    with pytest.raises(ravelo.Error):
        net.add_node("1bad", ["x", "y"])
    with pytest.raises(ravelo.Error):
        net.add_node("tub", ["x", "y"])  # the name is taken
    with pytest.raises(ValueError, match="node kind"):
        net.add_node("extra", ["x"], kind="oracle")
    assert [n.name for n in net] == names
    assert [p.name for p in net["asia"].children] == ["tub"]
    with pytest.raises(ravelo.Error):
        net.add_link("dysp", "asia")  # would close a cycle
    assert net["asia"].parents == []


def test_node_properties_round_trip_through_the_engine():
    net = ravelo.Net("Props")
    assert repr(net) == "<ravelo.Net 'Props' with 0 nodes>"
    x = net.add_node("X", 3)
    assert x.states == ["#0", "#1", "#2"] and x.finding is None
    x.states = ["lo", "mid", "hi"]
    x.title, x.comment, net.title = "An X", "says why", "A net"
    assert (x.title, x.comment, x.label, net.title) == ("An X", "says why", "An X", "A net")
    with pytest.raises(ravelo.Error):
        x.name = "not legal!"
    assert x.name == "X" and "X" in net and "Y" not in net
    for cut_short in (lambda: setattr(x, "title", "An\0other"), lambda: net["X\0"],
                      lambda: net.add_node("Y\0Z", 2), lambda: setattr(x, "finding", "lo\0")):
        with pytest.raises(ValueError, match="NUL"):
            cut_short()
    assert x.title == "An X" and len(net) == 1
    with pytest.raises(ValueError, match="has 3 states, not 2"):
        x.states = ["a", "b"]
    x.kind = "decision"
    assert x.kind == "decision" and x.type == "discrete"
    assert repr(x) == "<ravelo.Node 'X' (lo, mid, hi)>"
    x.equation = "X () = 2"
    assert x.equation == "X () = 2"
    x.equation = None
    assert x.equation == ""
    net.remove_node("X")
    assert len(net) == 0


def test_equation_becomes_a_table_over_the_levels():
    net = ravelo.Net("Eqn")
    x = net.add_node("X", 0)
    x.levels = [0, 1, 2, 3]
    assert x.type == "continuous" and x.num_states == 3
    x.equation = "X () = 1.5"
    x.equation_to_table()
    np.testing.assert_array_equal(x.cpt, [0, 1, 0])
    net.compile()
    assert x.expected_value()[0] == pytest.approx(1.5)
    with pytest.raises(ravelo.Error, match="inconsistent with previous findings"):
        x.value = 2.5
    assert x.value is None and x.finding is None
