"""What holds for all tests.

NUMERA_EXAMPLES=thorough draws many values, different in each run.
"""

import os
import signal

from hypothesis import HealthCheck, settings

COMMON = {"deadline": None, "database": None, "suppress_health_check": list(HealthCheck)}
settings.register_profile("quick", max_examples=60, derandomize=True, **COMMON)
settings.register_profile("thorough", max_examples=400, print_blob=True, **COMMON)
settings.load_profile(os.environ.get("NUMERA_EXAMPLES", "quick"))

# A shell starts what runs in its background with this signal ignored, and so are its children.
signal.signal(signal.SIGINT, signal.default_int_handler)
