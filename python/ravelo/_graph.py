"""Graph views of a net: networkx."""


def _to_networkx(net):
    """The net as a networkx DiGraph: one vertex per node (attributes states, kind, type),
    one edge per link."""
    import networkx as nx

    graph = nx.DiGraph(name=net.name)
    for node in net.nodes:
        graph.add_node(node.name, states=list(node.states), kind=node.kind, type=node.type)
    for node in net.nodes:
        for parent in node.parents:
            graph.add_edge(parent.name, node.name)
    return graph


def extend(Net):
    Net.to_networkx = _to_networkx
