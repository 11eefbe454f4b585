"""What scripts/cluster says to the tests."""


def pytest_addoption(parser):
    parser.addoption("--kills", type=int, default=50, help="how often a node is killed under the writers")
    parser.addoption("--build", required=True, help="the folder of the build")
