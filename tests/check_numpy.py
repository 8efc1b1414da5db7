"""Holds what the program reads and writes against NumPy: check_numpy.py PROGRAM DIRECTORY.

Exits with 77, and says so, where NumPy is not installed.
"""
import itertools
import json
import os
import shutil
import subprocess
import sys

try:
    import numpy
except ImportError:
    print(f"not run: {sys.executable} has no NumPy; install python3-numpy")
    sys.exit(77)

PROGRAM, DIRECTORY = sys.argv[1:]
ROWS, COLUMNS = 4, 5
KINDS = [  # type, values a pixel, what 1.0 is, layers
    ("u2", (9,), 1, 0), ("u2", (3, 3), 1, 0), ("i4", (6,), 1, 2), ("i4", (9,), 1, 3),
    ("f4", (9,), 2048, 0), ("f8", (3, 3), 2048, 0), ("f4", (12,), 4096, 4), ("f8", (3,), 4096, 1),
]


def run(*words):
    subprocess.run([PROGRAM, *words], check=True, cwd=DIRECTORY, stdout=subprocess.DEVNULL)


def random_array(random, kind, values):
    shape = (ROWS, COLUMNS, *values)
    if kind == "u2":
        return random.integers(0, 65536, shape)
    if kind == "i4":
        return random.integers(-2**31, 2**31, shape)
    gains = random.random(shape) * 31.9
    gains.flat[:8] = [0, 1, 0.5 / 2048, 1.5 / 2048, 2.5 / 2048, 0.5 / 4096, 1.5 / 4096, 31.99]
    return gains


def save(name, array, version):
    with open(os.path.join(DIRECTORY, name), "wb") as file:
        numpy.lib.format.write_array(file, array, version=version)


def make_wall():
    """Files of every version, order and type, each the source of a partition."""
    random = numpy.random.default_rng(5)
    cases = list(itertools.product([(1, 0), (2, 0), (3, 0)], "<>", "CF", KINDS))
    partitions, expected = [], {}
    for number, (version, byte_order, order, (kind, values, one, layers)) in enumerate(cases, 1):
        array = random_array(random, kind, values).astype(byte_order + kind, order=order)
        save(f"{number}.npy", array, version)
        partitions.append({"number": number,
                           "source": {"file": f"{number}.npy", "layers": layers}})
        name = f"{number}_layers{layers}" if layers else str(number)
        coefficients = numpy.rint(array.astype("f8") * one) if one != 1 else array
        expected[name] = coefficients.reshape(ROWS, COLUMNS, -1).astype("i4" if layers else "u2")
    screen = [0, 0, len(KINDS) * COLUMNS - 1, len(cases) // len(KINDS) * ROWS - 1]
    with open(os.path.join(DIRECTORY, "wall.json"), "w", encoding="utf-8") as file:
        json.dump({"screen": screen, "grid": [len(KINDS), len(cases) // len(KINDS)],
                   "band": [0, 0], "partitions": partitions}, file)
    return expected


def check(name, found, expected):
    assert found.dtype == expected.dtype, f"{name}: {found.dtype}, not {expected.dtype}"
    numpy.testing.assert_array_equal(found, expected, name)


def main():
    shutil.rmtree(DIRECTORY, ignore_errors=True)
    os.makedirs(DIRECTORY)
    expected = make_wall()
    run("import", "wall.json", "wall.db")
    run("export", "wall.db", "-o", "arrays")
    run("export", "wall.db", "-o", "texts", "--format", "text")
    for name, array in expected.items():
        check(name, numpy.load(os.path.join(DIRECTORY, "arrays", name + ".npy")), array)
        with open(os.path.join(DIRECTORY, "texts", name + ".txt"), encoding="ascii") as file:
            text = numpy.array(file.read().replace(",", " ").split(), "i8")
        check(name, text.astype(array.dtype).reshape(array.shape), array)

    # A delivery's table, of a wall of one partition, in which nothing is blended.
    gains = numpy.full((ROWS, COLUMNS, 9), 1.1, "f4")
    numpy.save(os.path.join(DIRECTORY, "gains.npy"), gains)
    with open(os.path.join(DIRECTORY, "one.json"), "w", encoding="utf-8") as file:
        json.dump({"screen": [0, 0, COLUMNS - 1, ROWS - 1], "grid": [1, 1], "band": [0, 0],
                   "partitions": [{"number": 1, "source": "gains.npy"}]}, file)
    run("import", "one.json", "one.db")
    run("revise", "one.db", "-o", "tables", "--table")
    table = numpy.load(os.path.join(DIRECTORY, "tables", "coefficients.npy"))
    check("coefficients.npy", table, numpy.full((ROWS, COLUMNS, 9), 2253, "u2"))
    print(f"{len(expected)} files of NumPy {numpy.__version__} came through")


main()
