"""Findings, beliefs and the net-wide queries, checked against reference beliefs and brute force."""
import itertools
import warnings

import numpy as np
import pytest

import ravelo
from conftest import TEST_DATA


def reference_scenarios(name):
    scenarios, current = [], None
    for line in (TEST_DATA / "nets" / f"{name}.ref").read_text().splitlines():
        words = line.split()
        if words and words[0] == "EVIDENCE":
            current = (dict(w.split("=") for w in words[1:]), {})
            scenarios.append(current)
        elif words:
            current[1][words[0]] = [float(p) for p in words[1:]]
    return scenarios


@pytest.mark.parametrize("name", ["asia", "alarm", "child", "insurance", "water"])
def test_beliefs_match_the_reference(name):
    net = ravelo.read(TEST_DATA / "nets" / f"{name}.bif")
    net.compile()
    for findings, expected in reference_scenarios(name):
        net.findings = findings
        got = net.beliefs(as_frame=False)
        for node, beliefs in expected.items():
            np.testing.assert_allclose(got[node], beliefs, atol=2e-5, err_msg=f"{name} {findings} {node}")
    frame = net.beliefs()
    assert list(frame.index.names) == ["node", "state"]
    assert frame.loc[net.nodes[0].name]["belief"].sum() == pytest.approx(1, abs=1e-5)


def brute_force_joint(net):
    """Every configuration of a small net with its probability, from the node tables."""
    nodes = net.nodes
    index = {n.name: i for i, n in enumerate(nodes)}
    for config in itertools.product(*(range(n.num_states) for n in nodes)):
        p = 1.0
        for n in nodes:
            p *= n.cpt[tuple(config[index[q.name]] for q in n.parents) + (config[index[n.name]],)]
        yield config, p


def test_queries_agree_with_brute_force(asia):
    joint = list(brute_force_joint(asia))
    names = [n.name for n in asia.nodes]
    xray, dysp = names.index("xray"), names.index("dysp")
    asia.findings = {"xray": "yes", "dysp": "no"}
    matching = [(c, p) for c, p in joint if c[xray] == 0 and c[dysp] == 1]
    evidence = sum(p for _, p in matching)
    assert asia.findings_probability() == pytest.approx(evidence, rel=1e-5)
    best = max(matching, key=lambda cp: cp[1])[0]
    mpe = asia.mpe()
    assert [asia[n].states.index(mpe[n]) for n in names] == list(best)
    tub, lung = names.index("tub"), names.index("lung")
    want = sum(p for c, p in matching if c[tub] == 0 and c[lung] == 1) / evidence
    assert asia.joint_probability({"tub": "yes", asia["lung"]: 1}) == pytest.approx(want, rel=1e-5)
    for n in asia.nodes:
        marginal = [sum(p for c, p in matching if c[names.index(n.name)] == s) / evidence
                    for s in range(n.num_states)]
        np.testing.assert_allclose(n.beliefs, marginal, atol=1e-6)


def test_finding_assignment_replaces_and_refusals_restore(asia):
    xray, tub, either = asia["xray"], asia["tub"], asia["either"]
    xray.finding = "yes"
    xray.finding = "no"  # replaces, rather than contradicting, the earlier finding
    assert xray.finding == "no" and asia.findings == {"xray": "no"}
    tub.finding = "yes"
    before = either.beliefs
    with pytest.raises(ravelo.Error) as caught:
        either.finding = "no"  # impossible: either is tub or lung
    assert caught.value.number > 0
    assert either.finding is None and tub.finding == "yes"
    np.testing.assert_allclose(either.beliefs, before)
    with pytest.raises(ValueError, match="node 'xray' has no state 'maybe'"):
        xray.finding = "maybe"
    with pytest.raises(ValueError):
        xray.finding = 2
    assert xray.finding == "no"
    with pytest.raises(ravelo.Error):
        asia.findings = {"xray": "yes", "tub": "yes", "either": "no"}
    assert asia.findings == {"xray": "no", "tub": "yes"}
    del asia.findings
    assert asia.findings == {}


def test_likelihood_value_and_negative_findings(asia):
    xray = asia["xray"]
    prior = xray.beliefs
    xray.likelihood = [0.8, 0.2]
    assert xray.finding is None
    np.testing.assert_allclose(xray.likelihood, [0.8, 0.2], atol=1e-7)
    weighted = prior * [0.8, 0.2]
    np.testing.assert_allclose(xray.beliefs, weighted / weighted.sum(), atol=1e-6)
    with pytest.raises(ValueError, match="one number per state"):
        xray.likelihood = [0.5]
    with pytest.raises(ravelo.Error):
        xray.likelihood = [1.5, 0.2]
    np.testing.assert_allclose(xray.likelihood, [0.8, 0.2], atol=1e-7)
    xray.retract()
    xray.enter_not("yes")
    np.testing.assert_allclose(xray.beliefs, [0, 1], atol=1e-7)
    xray.finding = None
    np.testing.assert_allclose(xray.beliefs, prior, atol=1e-7)


def test_levels_give_expected_values_and_values_as_findings():
    net = ravelo.Net("Levels")
    x = net.add_node("X", ["low", "mid", "high"])
    x.levels = [1.0, 2.0, 4.0]
    x.cpt = [0.2, 0.5, 0.3]
    net.compile()
    mean, sd = x.expected_value()
    assert mean == pytest.approx(0.2 + 1.0 + 1.2, rel=1e-6)
    assert sd == pytest.approx(np.sqrt(0.2 * 1 + 0.5 * 4 + 0.3 * 16 - mean ** 2), rel=1e-5)
    with pytest.raises(ValueError):
        x.levels = [[1, 2], [3, 4]]
    np.testing.assert_array_equal(x.levels, [1, 2, 4])


def test_expected_utilities_of_a_decision():
    net = ravelo.Net("Umbrella")
    weather = net.add_node("weather", ["rain", "dry"])
    forecast = net.add_node("forecast", ["wet", "fine"], parents=[weather])
    umbrella = net.add_node("umbrella", ["take", "leave"], parents=[forecast], kind="decision")
    worth = net.add_node("worth", 0, parents=[weather, umbrella], kind="utility")
    weather.cpt = [0.3, 0.7]
    forecast.cpt = [[0.8, 0.2], [0.1, 0.9]]
    worth.func = [[70, 0], [20, 100]]
    np.testing.assert_array_equal(worth.func, [[70, 0], [20, 100]])
    net.compile()
    net.auto_update = False
    forecast.finding = "wet"
    rain = 0.3 * 0.8 / (0.3 * 0.8 + 0.7 * 0.1)
    np.testing.assert_allclose(umbrella.expected_utils, [rain * 70 + (1 - rain) * 20, (1 - rain) * 100],
                               rtol=1e-5)
    with pytest.raises(ravelo.Error):
        worth.beliefs


def test_engine_warnings_go_to_the_warnings_module():
    net = ravelo.Net("Untabled")
    net.add_node("A", ["a", "b"])
    with pytest.warns(ravelo.RaveloWarning, match=r"don't have conditional probability tables"):
        net.compile()
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        net.uncompile()
        with pytest.raises(ravelo.RaveloWarning):
            net.compile()


def test_whole_net_reads_skip_nodes_without_beliefs():
    net = ravelo.Net("Party")
    weather = net.add_node("W", ["rain", "dry"])
    decide = net.add_node("D", ["take", "leave"], kind="decision")
    worth = net.add_node("U", 0, parents=[weather, decide], kind="utility")
    weather.cpt = [0.3, 0.7]
    worth.func = [[1, 2], [3, 4]]
    net.compile()
    weather.finding = "dry"
    assert net.findings == {"W": "dry"}
    assert sorted(net.beliefs(as_frame=False)) == ["D", "W"]
    assert net.beliefs().loc[("W", "dry"), "belief"] == 1
    assert "U" in net.to_dot()
