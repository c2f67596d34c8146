"""Host values as collapsible trees for notebooks."""

from html import escape

MAX_DEPTH = 20
MAX_ELEMENTS = 20
MAX_NODES = 1000
OPEN_LEVELS = 2

# Notebooks have their own themes besides the system's; text takes the notebook's colour. Their
# rules for nested lists are more specific than ours and would draw bullets.
_DARK = "--numera-name:#79c0ff;--numera-class:#d2a8ff;--numera-rule:#6e7681"
STYLE = f"""<style>
.numera{{--numera-name:#0550ae;--numera-class:#8250df;--numera-rule:#afb8c1;
font:13px/1.5 ui-monospace,SFMono-Regular,Menlo,Consolas,"DejaVu Sans Mono",monospace;
color:inherit;text-align:left}}
@media (prefers-color-scheme:dark){{.numera{{{_DARK}}}}}
[data-jp-theme-light="false"] .numera,.vscode-dark .numera,[data-theme="dark"] .numera{{{_DARK}}}
[data-jp-theme-light="true"] .numera,.vscode-light .numera,[data-theme="light"] .numera{{
--numera-name:#0550ae;--numera-class:#8250df;--numera-rule:#afb8c1}}
.numera ul{{list-style:none!important;margin:0 0 0 .45em!important;padding:0 0 0 1em!important;
border-left:1px solid var(--numera-rule)}}
.numera li{{margin:0;padding:0;overflow-wrap:anywhere}}
.numera summary{{cursor:pointer}}
.numera li>.numera-leaf,.numera li.numera-leaf{{padding-left:1.08em}}
.numera-name{{color:var(--numera-name)}}
.numera-class{{color:var(--numera-class)}}
.numera-size{{opacity:.7}}
</style>"""


def render(value):
    return f'<div class="numera">{STYLE}{_Tree().node(None, value, 0)}</div>'


class _Tree:
    """Counts the nodes it shows, so that a notebook stays small for any value."""

    def __init__(self):
        self.nodes = 0

    def node(self, name, value, depth):
        self.nodes += 1
        if value is None:
            empty = '<span class="numera-size">&lt;empty&gt;</span>'
            return f'<div class="numera-leaf">{_label(name)}{empty}</div>'
        children = self.children(value, depth) if depth < MAX_DEPTH else ""
        head = _label(name) + _head(value)
        if not children:
            return f'<div class="numera-leaf">{head}{_elements(value)}</div>'
        state = " open" if depth < OPEN_LEVELS else ""
        return f"<details{state}><summary>{head}</summary><ul>{children}</ul></details>"

    def children(self, value, depth):
        shown, rest = _parts(value)
        items = []
        for i, (name, part) in enumerate(shown):
            if self.nodes >= MAX_NODES:
                rest += len(shown) - i
                break
            items.append(f"<li>{self.node(name, part, depth + 1)}</li>")
        if rest:
            items.append(f'<li class="numera-leaf numera-size">... {rest} more</li>')
        return "".join(items)


def _parts(value):
    """The names and values of the slots to show, and the number of the others."""
    count = min(len(value), MAX_ELEMENTS)
    if value.class_name == "cell":
        return [(f"{{{i}}}", value[i]) for i in range(count)], len(value) - count
    if not value.fields:
        return [], 0
    if len(value) == 1:
        return [(name, value[name]) for name in value.fields], 0
    return [(f"({i})", value[i]) for i in range(count)], len(value) - count


def _label(name):
    if name is None:
        return ""
    text = name.encode("utf-8", "backslashreplace").decode()
    return f'<span class="numera-name">{escape(text)}</span>: '


def _head(value):
    kind, size, _ = _line(value)
    return (
        f'<span class="numera-class">{escape(kind)}</span> <span class="numera-size">{size}</span>'
    )


def _elements(value):
    return escape(_line(value)[2])


def _line(value):
    """The class, size and elements, as in the printed line of the value."""
    line = value.tree(max_depth=0, max_elements=MAX_ELEMENTS, max_lines=1).splitlines()[0]
    size = "x".join(map(str, value.shape))
    kind, _, elements = line.partition(f" {size}")
    return kind, size, elements
