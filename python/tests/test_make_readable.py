import numera
import pyarrow as pa
import pytest
from envelopes import encoded, table
from numera import host


@pytest.mark.parametrize(
    "x",
    [
        pa.array(["a", None, "ж"]),
        pa.array([b"a", None, b""]),
        pa.array([[1], None, [2, 3]]),
        pa.array([{"a": 1, "b": "x"}, None]),
        pa.chunked_array([["a", "b"], ["a", None]]).dictionary_encode(),
        pa.array([1, None], pa.timestamp("ms", "Europe/Paris")),
    ],
    ids=lambda x: str(x.type),
)
def test_written_values_return_made_readable(x):
    result = numera.to_arrow(numera.make_readable(numera.to_host(x)))
    assert result.to_pylist() == x.to_pylist()


def test_ordinary_values_are_encoded():
    assert numera.to_arrow(numera.make_readable(host.numeric([[1, 3], [2, 4]]))).to_pylist() == [1, 2, 3, 4]
    assert numera.to_arrow(numera.make_readable(host.logical([True, False]))).to_pylist() == [True, False]
    assert numera.to_arrow(numera.make_readable(host.char(["ab", "cd"]))).to_pylist() == ["ab", "cd"]


def test_encode_is_the_former_name_of_make_readable():
    value = host.string(["a", None])
    with pytest.warns(DeprecationWarning, match="^call numera.make_readable$"):
        assert numera.encode(value) == numera.make_readable(value)


def test_make_readable_names_the_place():
    with pytest.raises(pa.ArrowTypeError, match="^Value: found a complex 1-by-1 double array, expected"):
        numera.make_readable(host.numeric([1j]))


@pytest.mark.parametrize("column, error, text, type_", [
    (encoded("array", "double", host.numeric([1j])), pa.ArrowTypeError,
     "Column 'Größe €' (index 1).Data: found a complex 1-by-1 double array, expected real numbers that "
     "are not sparse.", "the type is 'double': "),
    (encoded("array", "string", host.string(["\udc00"])), pa.ArrowInvalid,
     "Column 'Größe €' (index 1).Data: found text that is not UTF-16 in element 0 (Unpaired low "
     "surrogate at code unit 0.), expected paired surrogates.", "the type is 'string': "),
    ({**encoded("array", "double", host.numeric([1.0])), "Type": None}, pa.ArrowTypeError,
     "Column 'Größe €' (index 1).Type: found no value, expected one.", ""),
])
def test_make_readable_says_which_column_it_refuses_and_what_can_be_done(column, error, text, type_):
    value = table([encoded("array", "double", host.numeric([1.0])), column], ["n", "Größe €"])
    with pytest.raises(error) as caught:
        numera.make_readable(value)
    assert str(caught.value) == text
    assert (caught.value.column_name, caught.value.column_index) == ("Größe €", 1)
    assert caught.value.error_code is (numera.TableErrorCode.TypeError
                                       if error is pa.ArrowTypeError
                                       else numera.TableErrorCode.Internal)
    assert caught.value.__notes__ == [
        f"{type_}change the value at that place to what was expected there, "
        "or leave the column out of the table."
    ]


@pytest.mark.parametrize(
    "text, bytes_, offsets",
    [
        (host.string(["a", None, "é"]), b"a\xc3\xa9\0", [0, 1, 1, 3]),
        (host.cell(["ab", "c"]), b"abc\0", [0, 2, 3]),
        (host.char(["ab", "cd"]), b"abcd\0", [0, 2, 4]),
    ],
    ids=["string", "cell", "char"],
)
def test_texts_become_utf8(text, bytes_, offsets):
    packed, ends = numera.utf16_to_utf8(text)
    assert packed.numpy().tobytes() == bytes_
    assert (ends.class_name, ends.to_python()) == ("uint64", offsets)


def test_text_that_is_no_utf16_is_refused_with_its_identifier():
    with pytest.raises(ValueError) as caught:
        numera.utf16_to_utf8(host.string(["a", "\ud800"]))
    assert caught.value.identifier == "NUMERA:io:arrow:unicode:UnrecognizedUTF16Character"
    assert str(caught.value).startswith("NUMERA:io:arrow:unicode:UnrecognizedUTF16Character (2, ")
