"""A local Ray cluster. It sends no usage reports, and other machines cannot reach it."""

import contextlib
import logging
import os
import pathlib

# Ray reads these when it is imported.
os.environ["RAY_USAGE_STATS_ENABLED"] = "0"
# With this, Ray listens on 127.0.0.1 only, on Linux as well. The argument
# _node_ip_address="127.0.0.1" does not: Ray turns it into the address that other machines see.
os.environ["RAY_ENABLE_WINDOWS_OR_OSX_CLUSTER"] = "0"
os.environ.setdefault("RAY_DATA_DISABLE_PROGRESS_BARS", "1")

import ray
import ray.data


@contextlib.contextmanager
def local_cluster(workers: int):
    """A cluster on this machine with cores for `workers` workers. Shuts down after the block."""
    # The workers import the modules beside this one.
    here = str(pathlib.Path(__file__).resolve().parent)
    before = os.environ.get("PYTHONPATH")
    os.environ["PYTHONPATH"] = os.pathsep.join(filter(None, [here, before]))
    try:
        # Two more logical cores for reading, so that the workers do not block it.
        ray.init(num_cpus=workers + 2, include_dashboard=False,
                 object_store_memory=256 * 2**20, logging_level=logging.ERROR,
                 log_to_driver=False)
        context = ray.data.DataContext.get_current()
        context.enable_progress_bars = False
        yield
    finally:
        ray.shutdown()
        if before is None:
            del os.environ["PYTHONPATH"]
        else:
            os.environ["PYTHONPATH"] = before
