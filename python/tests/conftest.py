import os
import pathlib

import pytest

pytest.importorskip("numpy")
ravelo = pytest.importorskip("ravelo")

SOURCE_DIR = pathlib.Path(os.environ.get("RAVELO_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[2]))
EXAMPLES = SOURCE_DIR / "examples"
TEST_DATA = SOURCE_DIR / "tests" / "data"


@pytest.fixture
def asia():
    """The Asia net from the examples, compiled."""
    net = ravelo.read(EXAMPLES / "asia.dne")
    net.compile()
    yield net
    net.delete()
