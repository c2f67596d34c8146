"""Host values as NumPy arrays, as plain Python objects, and as parts for pickle."""

import numpy

from . import _core, host


def view(value):
    try:
        return numpy.asarray(memoryview(value))
    except BufferError:
        raise TypeError(
            f"HostArray: found {_described(value)}, expected a numeric, logical or char "
            "array that NumPy can represent."
        ) from None


def to_python(value):
    if value.class_name == "char":
        return _char(value)
    if value.class_name == "string":
        texts = _core._texts(value)
        return texts[0] if len(texts) == 1 else _shaped(texts, value.shape)
    if value.class_name == "cell":
        return _shaped([_slot(child) for child in value], value.shape)
    if value.fields or value.class_name == "struct":
        return _struct(value)
    elements = view(value).reshape(-1, order="F")
    return elements[0].item() if len(elements) == 1 else _shaped(elements, value.shape)


def reduce(value):
    kind = value.class_name
    if kind == "char":
        return _restore, ("char", value.numpy())
    if kind == "string":
        return _restore, ("string", _core._texts(value), value.shape)
    if kind == "cell":
        return _restore, ("cell", list(value), value.shape)
    if kind == "struct":
        return _restore, ("struct", list(value.fields), _slots(value), value.shape)
    try:
        elements = memoryview(value)
    except BufferError:
        raise TypeError(f"HostArray: found {_described(value)}, which cannot be pickled.") from None
    return _restore, ("numeric", numpy.asarray(elements))


def _restore(kind, *parts):
    return _MAKERS[kind](*parts)


# Pickles contain these names.
_MAKERS = {
    "numeric": host.numeric,
    "char": host._char_of_units,
    "string": _core._new_string,
    "cell": _core._new_cell,
    "struct": _core._new_struct,
}


def _described(value):
    return value.tree(max_depth=0, max_elements=1, max_lines=1)


def _slot(child):
    return None if child is None else child.to_python()


def _slots(structs):
    """The values of a struct array, element by element."""
    return [element[name] for element in structs for name in structs.fields]


def _struct(value):
    elements = [{name: _slot(element[name]) for name in value.fields} for element in value]
    return elements[0] if len(elements) == 1 else _shaped(elements, value.shape)


def _char(value):
    if value.shape in [(0, 0), (1, len(value))]:
        return value.text
    rows = view(value)
    rows = rows.reshape(rows.shape[0], rows.shape[1], -1, order="F")
    return [
        rows[row, :, page].tobytes().decode("utf-16-le", "surrogatepass")
        for page in range(rows.shape[2])
        for row in range(rows.shape[0])
    ]


def _shaped(elements, shape):
    """Elements in storage order as a list, or as nested lists if there are several axes."""
    if len(shape) == 2 and (1 in shape or 0 in shape):
        return elements.tolist() if isinstance(elements, numpy.ndarray) else elements
    if not isinstance(elements, numpy.ndarray):
        objects = numpy.empty(len(elements), dtype=object)
        for i, element in enumerate(elements):
            objects[i] = element
        elements = objects
    return elements.reshape(shape, order="F").tolist()
