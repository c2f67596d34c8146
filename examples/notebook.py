"""Runs a notebook and compares its output with the stored output; --write stores the new output.

usage: python examples/notebook.py [--write] NOTEBOOK

Figures are not compared, because their pixels depend on the fonts of the machine.
"""

import argparse
import sys
from pathlib import Path

import nbformat
from nbclient import NotebookClient


def run(notebook, folder):
    NotebookClient(notebook, timeout=600, kernel_name="python3",
                   resources={"metadata": {"path": str(folder)}}).execute()
    for cell in notebook.cells:
        cell.metadata.pop("execution", None)  # the times of this run
    notebook.metadata["language_info"] = {"name": "python"}


def printed(notebook):
    """The source and the printed texts of every cell."""
    outputs = []
    for cell in notebook.cells:
        texts = []
        for output in cell.get("outputs", []):
            data = output.get("data", {})
            texts.append((output.get("text"), data.get("text/plain"), data.get("text/html")))
        outputs.append((cell.source, texts))
    return outputs


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--write", action="store_true", help="store the new outputs")
    parser.add_argument("notebook", type=Path)
    arguments = parser.parse_args()
    notebook = nbformat.read(arguments.notebook, as_version=4)
    stored = printed(notebook)
    run(notebook, arguments.notebook.parent)
    if arguments.write:
        nbformat.write(notebook, arguments.notebook)
        return 0
    differing = [new for old, new in zip(stored, printed(notebook), strict=True) if old != new]
    for source, texts in differing:
        print(f"notebook: stored is something else than what this cell prints:\n{source}\n{texts}",
              file=sys.stderr)
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
