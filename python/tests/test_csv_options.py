"""How CSV is read and written where its user knows more of it than it shows."""

import numera
import pyarrow as pa
import pytest
from table_files import columns


def scanned(path, **options):
    return pa.concat_tables(numera.to_arrow(numera.make_readable(table))
                            for table in numera.scan(path, **options)).to_pydict()


CALLS = pytest.mark.parametrize(
    "call", [lambda path, **options: columns(numera.read(path, **options)), scanned],
    ids=["read", "scan"])


@pytest.fixture
def path(tmp_path):
    return tmp_path / "rows.csv"


@CALLS
def test_the_delimiter_can_be_named(path, call):
    path.write_text("a:b,c\n1:2,3\n")
    assert call(path, csv_delimiter=":") == {"a": [1], "b,c": ["2,3"]}


@CALLS
def test_without_a_heading_the_first_line_is_a_row(path, call):
    path.write_text("1,a\n2,b\n")
    assert call(path, csv_heading=False) == {"f0": [1, 2], "f1": ["a", "b"]}


@CALLS
def test_further_texts_are_null(path, call):
    path.write_text('n,t\n1,-\n-999,x\n,"-"\n')
    assert call(path, csv_nulls=["-999", "-"]) == {"n": [1, None, None], "t": [None, "x", "-"]}


@CALLS
def test_the_encoding_can_be_named(path, call):
    path.write_bytes("t\nnaïve\n".encode("latin1"))
    assert call(path, csv_encoding="latin1") == {"t": ["naïve"]}


@CALLS
def test_options_go_for_each_of_several_files(tmp_path, call):
    (tmp_path / "1.csv").write_text("1;x\n")
    (tmp_path / "2.csv").write_text("2;y\n")
    assert call(tmp_path, csv_heading=False, csv_delimiter=";") == {"f0": [1, 2], "f1": ["x", "y"]}


@CALLS
def test_options_for_csv_do_not_touch_other_formats(tmp_path, call):
    path = tmp_path / "rows.parquet"
    numera.write(numera.to_host(pa.table({"n": [1]})), path)
    options = {"csv_delimiter": ";", "csv_heading": False, "csv_nulls": ["1"],
               "csv_types_of_all_rows": True}
    assert call(path, **options) == {"n": [1]}


LATE = "n\n" + "1\n" * 1_000_000 + "0.5\n"


def test_all_rows_decide_the_types_for_read(path):
    path.write_text(LATE)
    assert columns(numera.read(path))["n"][-1] == 0.5


def test_all_rows_decide_the_types_for_scan_if_they_are_asked_to(path):
    path.write_text(LATE)
    assert scanned(path, csv_types_of_all_rows=True)["n"][-1] == 0.5


@pytest.mark.parametrize("call", [
    lambda path: numera.read(path, csv_types_of_all_rows=False),
    lambda path: list(numera.scan(path)),
], ids=["read", "scan"])
def test_the_first_megabyte_decides_the_types_otherwise(path, call):
    path.write_text(LATE)
    with pytest.raises(pa.ArrowInvalid, match="^'.*/rows.csv': .*conversion error to int64: invalid "
                                              "value '0.5'"):
        call(path)


@pytest.mark.parametrize("call", [numera.read, numera.scan])
@pytest.mark.parametrize("options, error, message", [
    ({"csv_delimiter": "::"}, ValueError, "csv_delimiter: found '::', expected one ASCII character."),
    ({"csv_delimiter": ""}, ValueError, "csv_delimiter: found '', expected one ASCII character."),
    ({"csv_delimiter": "·"}, ValueError, "csv_delimiter: found '·', expected one ASCII character."),
    ({"csv_delimiter": b","}, TypeError, "csv_delimiter: found bytes, expected a text."),
    ({"csv_heading": "no"}, TypeError, "csv_heading: found str, expected True or False."),
    ({"csv_nulls": "NA"}, TypeError, "csv_nulls: found a text, expected a list of texts."),
    ({"csv_nulls": ["NA", 1]}, TypeError, "csv_nulls: found int, expected a text."),
    ({"csv_encoding": 8}, TypeError, "csv_encoding: found int, expected a text."),
    ({"csv_types_of_all_rows": 1}, TypeError,
     "csv_types_of_all_rows: found int, expected True or False."),
])
def test_other_values_of_options_are_refused(path, call, options, error, message):
    path.write_text("n\n1\n")
    with pytest.raises(error) as caught:
        call(path, **options)
    assert str(caught.value) == message


@pytest.mark.parametrize("call", [numera.read, numera.scan])
def test_an_option_has_no_text_without_utf8(path, call):
    path.write_text("n\n1\n")
    with pytest.raises(UnicodeError):
        call(path, csv_nulls=["\udcff"])


@pytest.mark.parametrize("call", [numera.read, numera.scan])
def test_an_encoding_that_does_not_exist_is_refused(path, call):
    path.write_text("n\n1\n")
    with pytest.raises(pa.ArrowInvalid) as caught:
        call(path, csv_encoding="utf-99")
    assert str(caught.value) == f"{str(path)!r}: csv_encoding: there is no encoding 'utf-99'"


def test_the_delimiter_of_what_is_written_can_be_named(path):
    numera.write(numera.to_host(pa.table({"a": [1], "b": ["x"]})), path, csv_delimiter=";")
    assert path.read_text() == '"a";"b"\n1;"x"\n'


@pytest.mark.parametrize("delimiter, error, message", [
    (";;", ValueError, "csv_delimiter: found ';;', expected one ASCII character."),
    (1, TypeError, "csv_delimiter: found int, expected a text."),
])
def test_other_delimiters_are_not_written(path, delimiter, error, message):
    with pytest.raises(error) as caught:
        numera.write(numera.to_host(pa.table({"a": [1]})), path, csv_delimiter=delimiter)
    assert str(caught.value) == message and not path.exists()


def test_a_delimiter_that_numbers_have_is_not_written(path):
    with pytest.raises(pa.ArrowInvalid, match=f"^cannot write {path}: csv_delimiter: found "):
        numera.write(numera.to_host(pa.table({"a": [1]})), path, csv_delimiter="-")
    assert not path.exists()
