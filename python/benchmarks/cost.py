"""Times numera calls and similar pyarrow calls in one run, and prints the ratios.

usage: python python/benchmarks/cost.py [--rounds N]
"""

import argparse
import time

import numpy
import pyarrow

import numera

ROWS = 1_000_000
TEN = pyarrow.array(numpy.arange(10.0))
NUMBERS = pyarrow.array(numpy.random.default_rng(1).random(10 * ROWS))
WITH_NULLS = pyarrow.array(NUMBERS.to_numpy(), mask=numpy.arange(10 * ROWS) % 10 == 0)
TEXT = pyarrow.array([f"text {i}" for i in range(ROWS)])
WIDE = pyarrow.table({f"c{i}": numpy.arange(100.0) for i in range(1000)})
LISTS = pyarrow.array([[1.0, 2.0, 3.0]] * (ROWS // 4))
STRUCTS = pyarrow.array([{"a": 1, "b": "x"}] * (ROWS // 4))
TEN_ON_HOST = numera.to_host(TEN)
WIDE_ON_HOST = numera.to_host(WIDE)

# Name, our call, name and call of pyarrow's equivalent, calls per measurement, and the ratio that
# should not be exceeded.
CASES = [
    ("to_host, ten numbers", lambda: numera.to_host(TEN), "to_numpy", TEN.to_numpy, 20_000, 5),
    ("to_arrow, ten numbers", lambda: numera.to_arrow(TEN_ON_HOST), "to_numpy", TEN.to_numpy,
     20_000, 5),
    ("to_host, 10^7 doubles", lambda: numera.to_host(NUMBERS), "to_numpy and copy",
     lambda: NUMBERS.to_numpy().copy(), 1, 1),
    ("to_host, 10^7 with nulls", lambda: numera.to_host(WITH_NULLS), "to_numpy",
     lambda: WITH_NULLS.to_numpy(zero_copy_only=False), 1, 1),
    ("to_host, 10^6 texts", lambda: numera.to_host(TEXT), "to_numpy",
     lambda: TEXT.to_numpy(zero_copy_only=False), 1, 1 / 3),
    ("to_host, 10^6 texts", lambda: numera.to_host(TEXT), "to_pylist", TEXT.to_pylist, 1, 1 / 3),
    ("to_host, 1,000 columns", lambda: numera.to_host(WIDE), "to_pydict", WIDE.to_pydict, 1, 1 / 3),
    ("to_host, 1,000 columns", lambda: numera.to_host(WIDE), "to_pandas", WIDE.to_pandas, 1, 1 / 3),
    ("to_host, lists", lambda: numera.to_host(LISTS), "to_numpy",
     lambda: LISTS.to_numpy(zero_copy_only=False), 1, 1 / 3),
    ("to_host, lists", lambda: numera.to_host(LISTS), "to_pylist", LISTS.to_pylist, 1, 1 / 3),
    ("to_host, structs", lambda: numera.to_host(STRUCTS), "to_pylist", STRUCTS.to_pylist, 1, 1 / 3),
    ("to_arrow, 1,000 columns", lambda: numera.to_arrow(WIDE_ON_HOST), "to_pydict", WIDE.to_pydict,
     1, 1 / 3),
]


def seconds(call, calls):
    begin = time.perf_counter()
    for _ in range(calls):
        result = call()
    end = time.perf_counter()
    del result
    return (end - begin) / calls


def measured(ours, theirs, calls, rounds):
    """The best time of each. The two are measured in turns, so that other load affects both."""
    pairs = [(seconds(ours, calls), seconds(theirs, calls)) for _ in range(rounds)]
    return min(pair[0] for pair in pairs), min(pair[1] for pair in pairs)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--rounds", type=int, default=7)
    rounds = parser.parse_args().rounds
    print(f"{'numera':26}{'us':>11}   {'pyarrow':20}{'us':>11}{'ratio':>9}{'at most':>9}")
    for name, ours, other, theirs, calls, bound in CASES:
        a, b = measured(ours, theirs, calls, rounds)
        print(f"{name:26}{a * 1e6:11.2f}   {other:20}{b * 1e6:11.2f}{a / b:9.3f}{bound:9.2f}")


if __name__ == "__main__":
    main()
