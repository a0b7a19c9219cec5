"""Cases as pandas frames: drawing random cases, learning tables (counting, EM, gradient
ascent), testing a net's predictions, and the log-likelihood of cases.

A case frame has one column per node, holding state names (or state indices, or "#N"); an
empty cell (None or NaN) is a value not known.  An optional "NumCases" column gives each
case's weight (1 when absent); an "IDnum" column is ignored.
"""
import math
import os
import pathlib

_NOT_NODES = ("NumCases", "IDnum")
_LEARNERS = {"counting": 1, "em": 3, "gradient": 4}


def _is_missing(value):
    return value is None or (isinstance(value, float) and math.isnan(value))


def _learnable(net):
    return [n for n in net.nodes if n.kind == "nature" and n.num_states > 0]


class _Findings:
    """Keeps the net's findings and auto-update setting, and puts them back afterwards."""

    def __init__(self, net):
        self.net = net

    def __enter__(self):
        self.findings = self.net.findings
        self.auto_update = self.net.auto_update
        self.net.auto_update = False
        return self

    def __exit__(self, *exc):
        self.net.findings = self.findings
        self.net.auto_update = self.auto_update
        return False


def _case_states(net, cases):
    """The frame's nodes, its rows as state indices (None where missing) and weights.

    Every value is checked before anything is learned, so a bad one changes nothing."""
    columns = [c for c in cases.columns if c not in _NOT_NODES]
    nodes = [net[c] for c in columns]
    lookup = []
    for node in nodes:
        index = {name: i for i, name in enumerate(node.states)}
        index.update({f"#{i}": i for i in range(node.num_states)})
        lookup.append(index)
    rows = []
    for number, values in enumerate(cases[columns].itertuples(index=False, name=None)):
        row = []
        for node, index, value in zip(nodes, lookup, values):
            if _is_missing(value):
                row.append(None)
            elif isinstance(value, str) and value in index:
                row.append(index[value])
            elif not isinstance(value, (str, bool)) and int(value) == value and 0 <= value < node.num_states:
                row.append(int(value))
            else:
                raise ValueError(f"case {number}: node '{node.name}' has no state '{value}'")
        rows.append(row)
    weights = (cases["NumCases"].astype(float).tolist() if "NumCases" in cases.columns
               else [1.0] * len(rows))
    return nodes, rows, weights


def _enter_case(net, nodes, row):
    net.retract()
    for node, state in zip(nodes, row):
        if state is not None:
            node.finding = state


def _simulate(net, n, findings=None, missing=0.0, seed=None):
    """Draws n random cases from the net given the findings (a dict as for net.findings),
    as a pandas DataFrame with one categorical column per nature node.  missing: the chance
    that each drawn value is left out.  seed: a seed for reproducible cases (any integer)."""
    import numpy as np
    import pandas as pd

    if not 0 <= missing <= 1:
        raise ValueError(f"missing must be a chance from 0 to 1, not {missing}")
    if n < 0:
        raise ValueError(f"the number of cases must not be negative, not {n}")
    with _Findings(net):
        net.findings = findings or {}
        given = net.findings
        drawn = [node for node in _learnable(net) if node.name not in given]
        if seed is not None:
            net._use_random_seed(seed)
        try:
            values = {node.name: [] for node in drawn}
            for _ in range(n):
                if net._generate_case(drawn) != 0:
                    raise RuntimeError("no case could be drawn: every try contradicted the findings")
                for node in drawn:
                    values[node.name].append(node.finding)
                net.findings = given
        finally:
            if seed is not None:
                net._use_random_seed(None)
    hide = np.random.default_rng(seed).random((n, len(drawn))) < missing
    frame = {}
    for node in _learnable(net):
        if node.name in values:
            column = [None if hide[i, drawn.index(node)] else v for i, v in enumerate(values[node.name])]
        else:
            column = [given[node.name]] * n
        frame[node.name] = pd.Categorical(column, categories=node.states)
    return pd.DataFrame(frame)


def _case_text(net, cases):
    """Case-file text for a frame (checked first), or the text of a case file given by path."""
    if isinstance(cases, (str, os.PathLike)):
        return pathlib.Path(cases).read_text()
    nodes, rows, weights = _case_states(net, cases)
    weighted = "NumCases" in cases.columns
    lines = ["\t".join([n.name for n in nodes] + (["NumCases"] if weighted else []))]
    for row, weight in zip(rows, weights):
        cells = ["*" if s is None else node.states[s] for node, s in zip(nodes, row)]
        lines.append("\t".join(cells + ([repr(float(weight))] if weighted else [])))
    return "\n".join(lines) + "\n"


def _learn(net, cases, method="counting", max_iters=None, tol=None, degree=1.0):
    """Learns the tables of the nature nodes from cases: a DataFrame, or the path of a case file.

    method: "counting" (each case whose values give a node and all its parents adds its weight
    times degree to that node's counts), "em" or "gradient" (which also learn from cases with
    values missing, iterating up to max_iters times until the log-likelihood changes by less
    than tol).  A value the net doesn't know is refused before anything is learned."""
    if method not in _LEARNERS:
        raise ValueError(f"learning method '{method}' is not available; use one of "
                         + ", ".join(_LEARNERS))
    if method != "counting" or not hasattr(cases, "columns"):
        net._learn_cases(_learnable(net), _case_text(net, cases), _LEARNERS[method],
                         -1 if max_iters is None else max_iters, -1.0 if tol is None else tol, degree)
        return
    nodes, rows, weights = _case_states(net, cases)
    learners = _learnable(net)
    with _Findings(net):
        for row, weight in zip(rows, weights):
            _enter_case(net, nodes, row)
            net._revise_by_findings(learners, degree * weight)


def _log_likelihood(net, cases):
    """The sum over the cases of their weight times the natural log of their probability
    under the net (the net must be compiled)."""
    nodes, rows, weights = _case_states(net, cases)
    total = 0.0
    with _Findings(net):
        for row, weight in zip(rows, weights):
            _enter_case(net, nodes, row)
            total += weight * math.log(net.findings_probability())
    return total


def _test(net, cases, nodes):
    """Tests how well the net predicts the nodes from the other values of each case.

    Returns (scores, confusion): scores is a DataFrame indexed by node with columns
    "error_rate", "log_loss" and "quadratic_loss"; confusion maps each node's name to a
    DataFrame of weighted case counts, predicted states down, actual states across."""
    import pandas as pd

    tested = [net[n] if isinstance(n, str) else n for n in nodes]
    results = net._test_cases(tested, _case_text(net, cases))
    scores = pd.DataFrame({name: r[:3] for name, r in results.items()},
                          index=["error_rate", "log_loss", "quadratic_loss"]).T
    confusion = {}
    for node in tested:
        frame = pd.DataFrame(results[node.name][3], index=node.states, columns=node.states)
        frame.index.name, frame.columns.name = "predicted", "actual"
        confusion[node.name] = frame
    return scores, confusion


def extend(Net):
    Net.simulate = _simulate
    Net.learn = _learn
    Net.log_likelihood = _log_likelihood
    Net.test = _test
