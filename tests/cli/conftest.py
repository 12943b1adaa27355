import pytest

from desk import Desk


@pytest.fixture
def desk():
    desk = Desk()
    yield desk
    desk.remove()
