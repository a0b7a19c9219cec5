"""Random cases, counting learning and the log-likelihood of cases, through pandas frames."""
import math

import numpy as np
import pytest

import ravelo
from conftest import EXAMPLES

pd = pytest.importorskip("pandas")


def test_simulated_cases_follow_the_net_and_its_findings(asia):
    cases = asia.simulate(3000, findings={"smoke": "yes"}, seed=11)
    assert list(cases.columns) == [n.name for n in asia.nodes] and len(cases) == 3000
    assert (cases["smoke"] == "yes").all()
    assert list(cases["lung"].cat.categories) == ["yes", "no"]
    asia["smoke"].finding = "yes"
    for name in ("lung", "bronc", "xray"):
        share = (cases[name] == "yes").mean()
        assert share == pytest.approx(asia[name].beliefs[0], abs=0.03), name
    assert asia.findings == {"smoke": "yes"}  # the caller's findings are back
    again = asia.simulate(3000, findings={"smoke": "yes"}, seed=11)
    pd.testing.assert_frame_equal(cases, again)
    assert not asia.simulate(50, seed=12).equals(asia.simulate(50, seed=13))


def test_simulated_cases_leave_values_out_as_asked(asia):
    cases = asia.simulate(2000, missing=0.25, seed=3)
    assert cases.isna().to_numpy().mean() == pytest.approx(0.25, abs=0.02)
    assert not asia.simulate(100, seed=3).isna().to_numpy().any()
    with pytest.raises(ValueError, match="chance from 0 to 1"):
        asia.simulate(10, missing=1.5)
    asia["either"].finding = "no"
    with pytest.raises(ravelo.Error):
        asia.simulate(10, findings={"tub": "yes", "either": "no"})
    assert asia.findings == {"either": "no"}


def test_log_likelihood_is_the_sum_of_log_case_probabilities(asia):
    cases = asia.simulate(40, missing=0.0, seed=5)
    names = [n.name for n in asia.nodes]
    want = 0.0
    for row in cases.itertuples(index=False):
        state = {name: asia[name].states.index(value) for name, value in zip(names, row)}
        for node in asia.nodes:
            index = tuple(state[p.name] for p in node.parents) + (state[node.name],)
            want += math.log(node.cpt[index])
    assert asia.log_likelihood(cases) == pytest.approx(want, rel=1e-5)
    weighted = cases.head(3).assign(NumCases=[2.0, 0.5, 1.0])
    singles = [asia.log_likelihood(cases.iloc[[i]]) for i in range(3)]
    assert asia.log_likelihood(weighted) == pytest.approx(2 * singles[0] + 0.5 * singles[1] + singles[2])
    # A missing value sums over its states.
    partial = pd.DataFrame({"xray": ["yes"], "dysp": [None]})
    asia["xray"].finding = "yes"
    assert asia.log_likelihood(partial) == pytest.approx(math.log(asia.findings_probability()))


def two_node_net():
    net = ravelo.Net("Learned")
    net.add_node("A", ["a0", "a1"])
    net.add_node("B", ["b0", "b1", "b2"], parents=["A"])
    return net


def test_counting_weighs_cases_and_refuses_unknown_values():
    weighted, repeated = two_node_net(), two_node_net()
    weighted.learn(pd.DataFrame({"A": ["a0", "a0", "a1", "a1", None],
                                 "B": ["b0", "b1", "#2", 2, "b0"],
                                 "NumCases": [1, 3, 1, 2, 1]}))
    # The same cases one by one, in two batches, in another order, states named otherwise.
    repeated.learn(pd.DataFrame({"A": ["a1", "a0", 0, "#1"], "B": ["b2", "b1", "b0", "b2"]}))
    repeated.learn(pd.DataFrame({"A": ["a0", "a1", "a0", None], "B": ["b1", "b2", "b1", "b0"]}))
    for name in ("A", "B"):
        np.testing.assert_allclose(weighted[name].cpt, repeated[name].cpt, atol=1e-6)
    a, b = weighted["A"].cpt, weighted["B"].cpt
    assert a[0] > a[1] and b[0, 1] > b[0, 0] > b[0, 2] and b[1, 2] > b[1, 0]
    before = b.copy()
    with pytest.raises(ValueError, match="case 1: node 'B' has no state 'b9'"):
        weighted.learn(pd.DataFrame({"A": ["a0", "a1"], "B": ["b1", "b9"]}))
    with pytest.raises(KeyError):
        weighted.learn(pd.DataFrame({"C": ["c0"]}))
    with pytest.raises(ValueError, match="'bayes' is not available"):
        weighted.learn(pd.DataFrame({"A": ["a0"]}), method="bayes")
    np.testing.assert_array_equal(weighted["B"].cpt, before)


def test_fading_forgets_what_was_learned():
    net = two_node_net()
    net.learn(pd.DataFrame({"A": ["a0"], "B": ["b0"]}))
    first = net["B"].cpt
    net.learn(pd.DataFrame({"A": ["a0"] * 50, "B": ["b2"] * 50}))
    net["B"].fade(0.5)
    faded = net["B"].cpt
    assert faded[0, 2] > first[0, 2]
    with pytest.raises(ravelo.Error):
        net["B"].fade(2.0)
    np.testing.assert_array_equal(net["B"].cpt, faded)


def test_learning_from_simulated_cases_recovers_the_tables():
    source = ravelo.read(EXAMPLES / "asia.dne")
    source.compile()
    cases = source.simulate(20000, seed=21)
    learned = ravelo.read(EXAMPLES / "asia.dne")
    for node in learned.nodes:
        node.cpt = None
    learned.learn(cases)
    for node in ("smoke", "bronc", "dysp"):
        np.testing.assert_allclose(learned[node].cpt, source[node].cpt, atol=0.03, err_msg=node)


def test_em_learns_from_cases_with_values_missing(tmp_path):
    source = ravelo.read(EXAMPLES / "asia.dne")
    source.compile()
    cases = source.simulate(50000, missing=0.2, seed=31)
    learned = ravelo.read(EXAMPLES / "asia.dne")
    for node in learned.nodes:
        node.cpt = None
    learned.learn(cases, method="em", max_iters=30, tol=1e-6)
    for node in ("smoke", "bronc", "dysp"):
        np.testing.assert_allclose(learned[node].cpt, source[node].cpt, atol=0.06, err_msg=node)
    # The same cases from a case file learn the same tables.
    path = tmp_path / "asia.cas"
    path.write_text(ravelo._cases._case_text(source, cases))
    again = ravelo.read(EXAMPLES / "asia.dne")
    for node in again.nodes:
        node.cpt = None
    again.learn(path, method="em", max_iters=30, tol=1e-6)
    np.testing.assert_allclose(again["bronc"].cpt, learned["bronc"].cpt, atol=1e-6)


def test_testing_scores_agree_with_the_confusion_matrix(asia):
    cases = asia.simulate(500, seed=41)
    scores, confusion = asia.test(cases, nodes=["either", "bronc"])
    assert list(scores.index) == ["either", "bronc"]
    for name in ("either", "bronc"):
        matrix = confusion[name].to_numpy()
        assert matrix.sum() == pytest.approx(500)
        assert scores.loc[name, "error_rate"] == pytest.approx(1 - np.trace(matrix) / 500)
        assert 0 <= scores.loc[name, "quadratic_loss"] <= 2 and scores.loc[name, "log_loss"] >= 0
    # either is a function of tub and lung, which the cases give: it is never mispredicted.
    assert scores.loc["either", "error_rate"] == 0
    with pytest.raises(KeyError):
        asia.test(cases, nodes=["nope"])
