"""Belief nets and decision nets in Python, over the Ravelo engine.

    >>> import ravelo
    >>> net = ravelo.read("asia.dne")
    >>> net.compile()
    >>> net["xray"].finding = "yes"
    >>> net["tub"].beliefs
    array([0.09..., 0.90...])

Every engine report of severity error or worse is raised as :class:`ravelo.Error`
(with ``number``, ``severity`` and ``message``); warnings go through :mod:`warnings`
as :class:`ravelo.RaveloWarning`.
"""
from ._ravelo import Error, Net, Node, RaveloWarning, engine_version, loads, read
from . import _cases, _frames, _graph, _pgmpy
from ._pgmpy import from_pgmpy

__all__ = ["Error", "Net", "Node", "RaveloWarning", "engine_version", "from_pgmpy", "loads", "read"]
__version__ = "5.5.0"

_frames.extend(Net, Node)
_graph.extend(Net)
_pgmpy.extend(Net)
_cases.extend(Net)
