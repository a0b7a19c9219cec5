"""Exchange with pgmpy, through the BIF text both sides read and write."""

from ._ravelo import loads


def _pgmpy_readwrite():
    try:
        from pgmpy.readwrite import BIFReader, BIFWriter
    except ImportError as missing:
        raise ImportError("exchanging nets with pgmpy needs pgmpy installed") from missing
    return BIFReader, BIFWriter


def from_pgmpy(model):
    """A ravelo Net made from a pgmpy Bayesian network (its structure and tables)."""
    _, BIFWriter = _pgmpy_readwrite()
    return loads(str(BIFWriter(model)), "bif")


def _to_pgmpy(net):
    """The net as a pgmpy Bayesian network (nature nodes with tables only, as BIF holds)."""
    BIFReader, _ = _pgmpy_readwrite()
    return BIFReader(string=net.dumps("bif")).get_model()


def extend(Net):
    Net.to_pgmpy = _to_pgmpy
