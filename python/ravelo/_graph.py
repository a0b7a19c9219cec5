"""Graph views of a net: networkx, and pictures drawn by Graphviz with belief bars."""
import html
import shutil
import subprocess

from ._ravelo import Error

_FILL = {"decision": "#dce8f5", "utility": "#f5dcdc", "constant": "#eeeeee"}
_BAR_WIDTH = 60


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


def _beliefs_or_none(node):
    """The node's beliefs when the net can give them (compiled, findings possible), else None."""
    if node.kind not in ("nature", "decision") or node.num_states == 0:
        return None
    try:
        return node.beliefs
    except Error:
        return None


def _label(node):
    """An HTML-like Graphviz label: the node's label, then one row per state with a belief bar."""
    e = html.escape
    rows = [f'<TR><TD COLSPAN="3"><B>{e(node.label)}</B></TD></TR>']
    beliefs = _beliefs_or_none(node)
    if beliefs is not None:
        for state, belief in zip(node.states, beliefs):
            width = max(1, round(float(belief) * _BAR_WIDTH))
            rest = max(1, _BAR_WIDTH + 1 - width)
            bar = (f'<TABLE BORDER="0" CELLPADDING="0" CELLSPACING="0"><TR>'
                   f'<TD BGCOLOR="#2b5797" WIDTH="{width}" HEIGHT="8" FIXEDSIZE="TRUE"></TD>'
                   f'<TD WIDTH="{rest}" HEIGHT="8" FIXEDSIZE="TRUE"></TD></TR></TABLE>')
            rows.append(f'<TR><TD ALIGN="LEFT">{e(state)}</TD>'
                        f'<TD ALIGN="RIGHT">{100 * float(belief):.1f}</TD><TD>{bar}</TD></TR>')
    fill = _FILL.get(node.kind, "#fffbe6")
    return (f'<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="{fill}">'
            + "".join(rows) + "</TABLE>")


def _to_dot(net):
    """The net in Graphviz's DOT language, with belief bars when the net is compiled."""
    quote = lambda text: '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'
    lines = [f"digraph {quote(net.name)} {{",
             '  node [shape=plaintext fontname="Helvetica" fontsize=10];']
    for node in net.nodes:
        lines.append(f"  {quote(node.name)} [label=<{_label(node)}>];")
    for node in net.nodes:
        for parent in node.parents:
            lines.append(f"  {quote(parent.name)} -> {quote(node.name)};")
    lines.append("}")
    return "\n".join(lines) + "\n"


def _run_dot(dot_text, output_format, path=None):
    dot = shutil.which("dot")
    if dot is None:
        raise RuntimeError("drawing a net needs Graphviz's 'dot' program (Debian package graphviz)")
    command = [dot, "-T" + output_format] + (["-o", str(path)] if path is not None else [])
    done = subprocess.run(command, input=dot_text.encode(), capture_output=True)
    if done.returncode != 0:
        raise RuntimeError("Graphviz failed: " + done.stderr.decode(errors="replace").strip())
    return done.stdout


def _draw(net, path, format=None):
    """Draws the net into a file through Graphviz; the format comes from the extension
    (svg, png, pdf, ...) unless given.  Compiled nets show belief bars in their nodes."""
    path = str(path)
    output_format = format or (path.rsplit(".", 1)[-1] if "." in path else "svg")
    _run_dot(_to_dot(net), output_format, path)


def _repr_svg_(net):
    """The picture a notebook shows for a net."""
    return _run_dot(_to_dot(net), "svg").decode()


def extend(Net):
    Net.to_networkx = _to_networkx
    Net.to_dot = _to_dot
    Net.draw = _draw
    Net._repr_svg_ = _repr_svg_
