"""Findings and beliefs of a whole net, as dicts and pandas frames."""


def _beliefs(net, nodes=None, as_frame=True):
    """The beliefs of the nodes given the current findings (when None, every node that has
    beliefs: the nature and decision nodes with states).

    As a pandas DataFrame indexed by (node, state) with one column "belief", or with
    ``as_frame=False`` as a dict {node name: numpy array}.
    """
    by_name = net.beliefs_dict(nodes)
    if not as_frame:
        return by_name
    import pandas as pd

    index, values = [], []
    for name, beliefs in by_name.items():
        for state, belief in zip(net[name].states, beliefs):
            index.append((name, state))
            values.append(belief)
    return pd.DataFrame({"belief": values},
                        index=pd.MultiIndex.from_tuples(index, names=["node", "state"]))


def _findings(net):
    """The current findings as {node name: state name, likelihood array or value}."""
    found = {}
    for node in net.nodes:
        if node.kind == "utility":
            continue
        discrete = node.num_states > 0
        if discrete and node.finding is not None:
            found[node.name] = node.finding
        elif node.value is not None:
            found[node.name] = node.value
        elif discrete and (node.likelihood != 1).any():
            found[node.name] = node.likelihood
    return found


def _set_findings(net, findings):
    """Replaces every finding by those given as {node: state, likelihood or value}.

    If any is refused, the net's findings are put back as they were and the error is raised.
    """
    before = _findings(net)
    net.retract()
    try:
        _enter(net, findings)
    except BaseException:
        net.retract()
        _enter(net, before)
        raise


def _enter(net, findings):
    for name, found in findings.items():
        node = net[name] if isinstance(name, str) else name
        if isinstance(found, (str, int)) and not isinstance(found, bool):
            node.finding = found
        elif isinstance(found, float):
            node.value = found
        else:
            node.likelihood = found


def extend(Net, Node):
    Net.beliefs = _beliefs
    Net.findings = property(_findings, _set_findings, lambda net: net.retract(),
                            _findings.__doc__ + "\n\nAssign a dict to replace them all; del retracts them.")
    Node.finding = property(Node.finding.fget, Node.finding.fset, lambda node: node.retract(),
                            Node.finding.__doc__)
