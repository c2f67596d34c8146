"""Prints the public names without a comment that doxygen passes over, and fails if there is one.

Doxygen is silent about enumerators and about files and namespaces, and where a file has no comment
also about everything that stands in the file alone. Takes the folder of its XML.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def is_documented(node):
    parts = (node.find("briefdescription"), node.find("detaileddescription"))
    return any(part is not None and "".join(part.itertext()).strip() for part in parts)


def undocumented(folder):
    for path in sorted(pathlib.Path(folder).glob("*.xml")):
        for compound in ElementTree.parse(path).iter("compounddef"):
            kind, name = compound.get("kind"), compound.findtext("compoundname")
            # A namespace that is only mentioned, as those of other libraries are, has no place.
            is_ours = compound.find("location").get("file") != "[generated]"
            if kind in ("file", "namespace") and is_ours and not is_documented(compound):
                yield f"{kind} {name}"
            for member in compound.iter("memberdef"):
                for value in member.iter("enumvalue"):
                    if not is_documented(value):
                        enumeration = member.findtext("name")
                        yield f"enumerator {enumeration}::{value.findtext('name')}"


if __name__ == "__main__":
    names = list(undocumented(sys.argv[1]))
    for name in names:
        print(f"not documented: {name}", file=sys.stderr)
    sys.exit(bool(names))
