"""Kestra from Python: questions about a machine, answered with Python's own types.

    import kestra

    with kestra.Session() as session:
        for process in session.query("SELECT PID, ImageName FROM Processes.Process"):
            print(process.PID, process["ImageName"])

        print(session.value("SELECT COUNT(*) FROM Processes.Process"))

        for directory in session.query("SELECT * FROM Files(DirPath='/etc', Levels=1).Directory"):
            for file in directory.children:
                print(file.Path, file.Size)

A number is an int, a text a str, NULL is None, a date an aware datetime in UTC, a flag set a
frozenset of the flags' names. A row is a Row, an item an Item. A query that fails raises QueryError,
and one that is no query QuerySyntaxError, which tells where and why.

This file is all of it: it needs libkestra.so.0 (or what KESTRA_LIBRARY names) and Python 3.9.
"""
import ctypes
import datetime
import os
import signal
import threading

__all__ = ["Session", "Row", "Item", "Error", "QueryError", "QuerySyntaxError", "Ended"]

_NOT_FOUND = -5
_NO_TIMEOUT = 0xFFFFFFFF
_DWORD, _BITMASK, _DATIME = 2, 4, 5

_library = ctypes.CDLL(os.environ.get("KESTRA_LIBRARY", "libkestra.so.0"))
_library.kestra_version.restype = ctypes.c_char_p
_library.kestra_create_error.restype = ctypes.c_char_p
__version__ = _library.kestra_version().decode()


class Error(Exception):
    """The library refused a call, or could not make a session."""


class QueryError(Error):
    """A query failed; the exception's text is that of the query's Error."""


class QuerySyntaxError(QueryError):
    """A text is no query. line and column count from 1; expected is what could have stood there, and
    suggestions what was probably meant."""

    def __init__(self, sentence, line, column, expected, suggestions):
        super().__init__(f"line {line}, column {column}: {sentence}")
        self.sentence, self.line, self.column = sentence, line, column
        self.expected, self.suggestions = expected, suggestions


class Ended(QueryError):
    """A query was cancelled, or its time was over."""


class _Handle:
    """Owns a handle of the C interface."""

    def __init__(self, kind, pointer):
        self.kind, self.pointer = kind, pointer

    def __del__(self):
        if self.pointer:
            getattr(_library, f"kestra_{self.kind}_release")(self.pointer)


def _call(name, *arguments):
    """The status of a function; a handle stands for its pointer."""
    function = getattr(_library, "kestra_" + name)
    return function(*(a.pointer if isinstance(a, _Handle) else a for a in arguments))


def _ask(kind, name, *arguments):
    """What a function gives out last; None where there is none of it."""
    result = kind()
    status = _call(name, *arguments, ctypes.byref(result))
    if status == _NOT_FOUND:
        return None
    if status != 0:
        raise Error(f"kestra_{name}: {status}")
    return result.value


def _take(kind, name, *arguments):
    pointer = _ask(ctypes.c_void_p, name, *arguments)
    return _Handle(kind, ctypes.c_void_p(pointer)) if pointer else None


def _text(name, handle):
    text, length = ctypes.c_void_p(), ctypes.c_size_t()
    status = _call(name, handle, ctypes.byref(text), ctypes.byref(length))
    if status != 0:
        raise Error(f"kestra_{name}: {status}")
    # Names of files may be no UTF-8; so they come back as os.fsencode wants them.
    return ctypes.string_at(text, length.value).decode("utf-8", "surrogateescape")


def _name(name, *arguments):
    return _ask(ctypes.c_char_p, name, *arguments).decode("utf-8", "surrogateescape")


def _moment(seconds):
    return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc)


def _param_value(param):
    kind = _ask(ctypes.c_int32, "param_type", param)
    if kind == _DWORD:
        return _ask(ctypes.c_uint32, "param_dword_value", param)
    if kind == _DATIME:
        return _moment(_ask(ctypes.c_uint32, "param_dword_value", param))
    text = _text("param_string_value", param)
    return frozenset(text.split("|")) - {""} if kind == _BITMASK else text


def _is(what, value):
    return _ask(ctypes.c_int32, "value_is_" + what, value) != 0


def _scalar(value):
    param = _take("param", "value_as_param", value)
    if param:
        return _param_value(param)
    if _is("undefined", value):
        return None
    if _is("boolean", value):
        return _ask(ctypes.c_int32, "value_as_bool", value) != 0
    if _is("datime", value):
        return _moment(_ask(ctypes.c_uint32, "value_as_datime", value))
    if _is("number", value) and not _is("string", value):
        return _ask(ctypes.c_int32, "value_as_long", value)
    return _text("value_as_string", value)


def _elements(value):
    values = _take("values", "value_as_vector", value)
    for number in range(_ask(ctypes.c_int32, "values_count", values)):
        yield _take("value", "values_value", values, number)


def _convert(value, columns):
    if _is("vector", value):
        cells = [_convert(cell, []) for cell in _elements(value)]
        return Row(columns, cells) if columns else cells
    if _is("vdiag_item", value):
        return Item(_take("item", "value_as_vdiag_item", value))
    return _scalar(value)


class Row:
    """A row of a SELECT list: its values by position, by column name, or as attributes."""

    __slots__ = ("_columns", "_values")

    def __init__(self, columns, values):
        self._columns, self._values = tuple(columns), tuple(values)

    def keys(self):
        return self._columns

    def __getitem__(self, key):
        if isinstance(key, str):
            if key not in self._columns:
                raise KeyError(key)
            return self._values[self._columns.index(key)]
        return self._values[key]

    def __getattr__(self, name):
        if name in Row.__slots__:  # of a copy that is being made
            raise AttributeError(name)
        try:
            return self[name]
        except KeyError:
            raise AttributeError(name) from None

    def __iter__(self):
        return iter(self._values)

    def __len__(self):
        return len(self._values)

    def __eq__(self, other):
        return isinstance(other, Row) and (self._columns, self._values) == (other._columns,
                                                                            other._values)

    def __hash__(self):
        return hash((self._columns, self._values))

    def __repr__(self):
        return f"Row({', '.join(f'{c}={v!r}' for c, v in zip(self._columns, self._values))})"


class Item:
    """An item of the tree: its properties by name or as attributes (None where one is not set), and
    the items below it."""

    def __init__(self, handle):
        self._handle = handle
        self._properties = None

    @property
    def name(self):
        """The name of its class."""
        return _name("item_name", self._handle)

    @property
    def children(self):
        items = _take("items", "item_diag_items", self._handle)
        for index in range(_ask(ctypes.c_int32, "items_count", items)):
            yield Item(_take("item", "items_item", items, index + 1))

    def _read(self):
        if self._properties is None:
            declared = _take("class", "item_class", self._handle)
            params = _take("params", "item_params", self._handle)
            found = {}
            for number in range(_ask(ctypes.c_int32, "class_property_count", declared)):
                name = ctypes.c_char_p()
                _call("class_property", declared, number, ctypes.byref(name), *[None] * 5)
                param = _take("param", "params_find", params, name)
                found[name.value.decode()] = _param_value(param) if param else None
            self._properties = found
        return self._properties

    def keys(self):
        return self._read().keys()

    def __getitem__(self, name):
        return self._read()[name]

    def __getattr__(self, name):
        if name.startswith("_"):
            raise AttributeError(name)
        try:
            return self._read()[name]
        except KeyError:
            raise AttributeError(name) from None

    def xml(self, raw=False):
        """The item with everything below it."""
        text, length = ctypes.c_void_p(), ctypes.c_size_t()
        _call("item_xml_dump", self._handle, 1 if raw else 0, ctypes.byref(text),
              ctypes.byref(length))
        return ctypes.string_at(text, length.value).decode("utf-8", "replace")

    def __repr__(self):
        known = ", ".join(f"{k}={v!r}" for k, v in self._read().items() if v is not None)
        return f"<{self.name} {known}>"


class _Termination:
    """What ends a running query: cancel, from any thread, and on the main thread a signal of Python's,
    whose handler could not run before the query has ended."""

    def __init__(self):
        self._lock = threading.Lock()  # guards the pipe, whose end makes the query end
        self._ends = None

    def cancel(self):
        with self._lock:
            if self._ends:
                os.write(self._ends[1], b"x")

    def __enter__(self):
        with self._lock:
            self._ends = os.pipe()
        for end in self._ends:
            os.set_blocking(end, False)
        self._is_main = threading.current_thread() is threading.main_thread()
        if self._is_main:
            self._former = signal.set_wakeup_fd(self._ends[1], warn_on_full_buffer=False)
        return ctypes.byref(ctypes.c_ssize_t(self._ends[0]))

    def __exit__(self, *_):
        if self._is_main:
            signal.set_wakeup_fd(self._former)
        with self._lock:
            ends, self._ends = self._ends, None
        for end in ends:
            os.close(end)


class _Options(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("log_directory", ctypes.c_char_p),
                ("cache_directory", ctypes.c_char_p), ("image_directory", ctypes.c_char_p),
                ("image_user", ctypes.c_char_p)]


class Session:
    """Where questions are asked. Used by the thread that made it; only cancel may be called from
    another. image is a directory with a Windows volume to ask instead of this machine, cache one
    where results are kept, plugins one with modules of yours; active allows statements that change
    the machine."""

    _pointer = None  # of a session that could not be made

    def __init__(self, *, image=None, image_user=None, cache=None, plugins=None, log=None,
                 active=False):
        self._pointer = ctypes.c_void_p()
        self._termination = _Termination()
        options = _Options(ctypes.sizeof(_Options),
                           *(os.fsencode(d) if d is not None else None for d in (log, cache, image)),
                           image_user.encode() if image_user is not None else None)
        if _call("session_create", ctypes.byref(options), ctypes.byref(self._pointer)) != 0:
            raise Error(_library.kestra_create_error().decode() or "no session could be made")
        self.allow_active(active)
        if plugins is not None and _call("session_set_plugins_dir", self._pointer,
                                         os.fsencode(plugins)) != 0:
            self.close()
            raise Error(f"{plugins}: no directory that plug-ins could be read from")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        if self._pointer:
            _call("session_destroy", self._pointer)
            self._pointer = ctypes.c_void_p()

    __del__ = close

    def _own(self):
        if not self._pointer:
            raise Error("the session is closed")
        return self._pointer

    def allow_active(self, allow=True):
        _call("session_allow_active", self._own(), 1 if allow else 0)

    def cancel(self):
        """Ends the query that runs, if one does. From any thread."""
        self._termination.cancel()

    def reset(self):
        """Forgets what modules were filled with, so that the next query reads the machine again."""
        _call("session_reinit_diag_root", self._own())

    def value(self, query, timeout=None):
        """Runs a query. A list of rows for one that has rows, else its value. timeout is in
        seconds; a module that is being filled is ended by cancel alone."""
        milliseconds = _NO_TIMEOUT
        if timeout is not None and timeout * 1000 < _NO_TIMEOUT:
            milliseconds = max(1, int(timeout * 1000))
        text = query.encode("utf-8", "surrogateescape")
        session = self._own()
        with self._termination as event:
            result = ctypes.c_void_p()
            status = _library.kestra_session_run_query_sync_n(
                session, text, ctypes.c_size_t(len(text)), event, ctypes.c_uint32(milliseconds),
                ctypes.byref(result))
        if status != 0:
            raise Error(f"kestra_session_run_query_sync_n: {status}")
        value = _Handle("value", result)
        if _is("error", value):
            raise self._error(text, value)
        if not _is("vector", value):
            return _convert(value, [])
        columns = self._columns()
        return [_convert(row, columns) for row in _elements(value)]

    def query(self, query, timeout=None):
        """Runs a query and iterates over its rows; a single value is one row."""
        rows = self.value(query, timeout)
        return iter(rows if isinstance(rows, list) else [rows])

    def _columns(self):
        columns = _take("columns", "session_columns", self._own())
        count = _ask(ctypes.c_int32, "columns_count", columns)
        return [_name("columns_name", columns, number) for number in range(count)]

    def _error(self, query, value):
        diagnosis = self._diagnosis(query)
        if diagnosis:
            return diagnosis
        text = _text("value_as_string", value)
        if text == "<ERROR>":
            return Ended("the query was cancelled, or its time was over, or it cannot be answered")
        return QueryError(text)

    def _diagnosis(self, query):
        found = _take("diagnosis", "session_diagnose", self._own(), query,
                      ctypes.c_size_t(len(query)))
        if not found or not _ask(ctypes.c_int32, "diagnosis_is_error", found):
            return None
        line, column = ctypes.c_int32(), ctypes.c_int32()
        _call("diagnosis_place", found, None, None, ctypes.byref(line), ctypes.byref(column))

        def texts(what):
            count = _ask(ctypes.c_int32, f"diagnosis_{what}_count", found)
            return [_name(f"diagnosis_{what}", found, number) for number in range(count)]

        return QuerySyntaxError(_name("diagnosis_message", found), line.value, column.value,
                                texts("expected"), texts("suggestion"))
