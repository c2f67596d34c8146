"""Prints public names without a comment that Doxygen does not report. Fails if there are any.

Doxygen does not report enumerators, files and namespaces. If a file has no comment, it also does
not report what belongs to that file alone. The argument is the folder of Doxygen's XML.
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
            # Doxygen also lists mentioned namespaces of other libraries, as "[generated]".
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
