"""Kestra from Python: questions about a machine, answered with Python's own types.

    import kestra

    with kestra.Session() as session:
        for process in session.query("SELECT PID, ImageName FROM Processes.Process"):
            print(process.PID, process["ImageName"])

        print(session.value("SELECT COUNT(*) FROM Processes.Process"))

        for directory in session.query("SELECT * FROM Files(DirPath='/etc', Levels=1).Directory"):
            for file in directory.children:
                print(file.Path, file.Size)

        for source in session.sources():
            for problem in source.problems:
                print("could not be read:", problem.subject, problem.reason)

A number is an int, a text a str, NULL is None, a date an aware datetime in UTC, a flag set a
frozenset of the flags' names. A row is a Row, an item an Item. A query that fails raises QueryError,
and one that is no query QuerySyntaxError, which tells where and why.

A session belongs to the thread that made it; threads that ask at the same time have a session each.
With asyncio, run a function that makes its session by asyncio.to_thread.

Ctrl-C ends a query that runs on the main thread, and so does any other signal with a handler in
Python: the handler is called then, and the query raises Ended unless the handler raises something.

This file is all of it: it needs libkestra.so.0 (or what KESTRA_LIBRARY names) and Python 3.8.
"""
from __future__ import annotations

import ctypes
import datetime
import os
import signal
import sysconfig
import threading
import time
import warnings
from typing import Any, Iterator, List, NamedTuple, Optional, Tuple, Union

__all__ = ["Session", "Row", "Item", "Source", "Problem", "Error", "QueryError", "QuerySyntaxError",
           "Ended", "MachineWarning"]

_NOT_FOUND = -5
_NO_TIMEOUT = 0xFFFFFFFF
_CLOCKS_DIFFER = 0.02  # seconds, between the library's clock and Python's
_DWORD, _BITMASK, _DATIME = 2, 4, 5


def _library_path():
    """That of KESTRA_LIBRARY, else the one that was installed with this file, else the system's."""
    name = "libkestra.so.0"
    if "KESTRA_LIBRARY" in os.environ:
        return os.environ["KESTRA_LIBRARY"]
    above = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
    for folder in "", sysconfig.get_config_var("MULTIARCH") or "":
        if os.path.exists(os.path.join(above, folder, name)):
            return os.path.join(above, folder, name)
    return name


_library = ctypes.CDLL(_library_path())
_library.kestra_version.restype = ctypes.c_char_p
_library.kestra_create_error.restype = ctypes.c_char_p
__version__ = _library.kestra_version().decode()


class Error(Exception):
    """The library refused a call, or could not make a session."""


class QueryError(Error):
    """A query failed; the exception's text is that of the query's Error, which is "<ERROR>" for what
    cannot be computed: an overflow, a division by zero, a sub-select that has not one row."""


class QuerySyntaxError(QueryError):
    """A text is no query. line and column count from 1; expected is what could have stood there, and
    suggestions what was probably meant."""

    def __init__(self, sentence: str, line: int, column: int, expected: List[str],
                 suggestions: List[str]):
        super().__init__(f"line {line}, column {column}: {sentence}")
        self.sentence, self.line, self.column = sentence, line, column
        self.expected, self.suggestions = expected, suggestions


class Ended(QueryError):
    """A query was cancelled, also by a signal, or its time was over."""


class MachineWarning(UserWarning):
    """What the machine has to say beside its answers, such as a registry hive that is damaged."""


class Problem(NamedTuple):
    """Something that could not be read, so that the answer may lack it."""
    subject: str
    reason: str


class Source(NamedTuple):
    """Where the rows of a query came from."""
    name: str
    arguments: str
    fill: str  # "machine", "memory" or "cache file"
    is_cut_short: bool
    rows_seen: int
    rows_kept: int
    seconds: float
    problem_count: int  # of all; problems has the first hundred
    problems: Tuple[Problem, ...]


class _Handle:
    """Owns a handle of the C interface."""

    def __init__(self, kind, pointer):
        self.kind, self.pointer = kind, pointer

    def __reduce__(self):
        raise TypeError("what belongs to the library cannot be copied or pickled; dict(item) can")

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


def _decoded(text):
    # Names of files may be no UTF-8; so they come back as os.fsencode wants them.
    return text.decode("utf-8", "surrogateescape")


def _text(name, handle, *arguments):
    text, length = ctypes.c_void_p(), ctypes.c_size_t()
    status = _call(name, handle, *arguments, ctypes.byref(text), ctypes.byref(length))
    if status != 0:
        raise Error(f"kestra_{name}: {status}")
    return _decoded(ctypes.string_at(text, length.value))


def _name(name, *arguments):
    return _decoded(_ask(ctypes.c_char_p, name, *arguments))


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

    def keys(self) -> Tuple[str, ...]:
        """The names of the columns; dict(row) has them with their values."""
        return self._columns

    def __dir__(self):
        return [*super().__dir__(), *self._columns]

    def __getitem__(self, key: Union[str, int, slice]) -> Any:
        if isinstance(key, str):
            if key not in self._columns:
                raise KeyError(key)
            return self._values[self._columns.index(key)]
        return self._values[key]

    def __getattr__(self, name: str) -> Any:
        if name in Row.__slots__:  # of a copy that is being made
            raise AttributeError(name)
        try:
            return self[name]
        except KeyError:
            raise AttributeError(f"the row has no column {name!r}") from None

    def __iter__(self) -> Iterator[Any]:
        return iter(self._values)

    def __len__(self) -> int:
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

    __slots__ = ("_handle", "_properties")

    def __init__(self, handle):
        self._handle = handle
        self._properties = None

    @property
    def name(self) -> str:
        """The name of its class."""
        return _name("item_name", self._handle)

    @property
    def children(self) -> Iterator[Item]:
        """The items directly below it."""
        items = _take("items", "item_diag_items", self._handle)
        for index in range(_ask(ctypes.c_int32, "items_count", items)):
            yield Item(_take("item", "items_item", items, index + 1))

    def _read(self):
        if self._properties is None:
            found = dict.fromkeys(_declared_names(_take("class", "item_class", self._handle)))
            params = _take("params", "item_params", self._handle)
            for index in range(_ask(ctypes.c_int32, "params_count", params)):
                param = _take("param", "params_item", params, index + 1)
                name = _name("param_name", param)
                if name in found:
                    found[name] = _param_value(param)
            self._properties = found
        return self._properties

    def keys(self) -> Tuple[str, ...]:
        """The names of the properties; dict(item) has them with their values."""
        return tuple(self._read())

    def __iter__(self) -> Iterator[str]:
        return iter(self._read())

    def __contains__(self, name) -> bool:
        return name in self._read()

    def __dir__(self):
        return [*super().__dir__(), *self._read()]

    def __getitem__(self, name: str) -> Any:
        return self._read()[name]

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        try:
            return self._read()[name]
        except KeyError:
            raise AttributeError(f"{self.name} has no property {name!r}") from None

    def xml(self, raw: bool = False) -> str:
        """The item with everything below it; raw has numbers in place of dates and options."""
        text = _text("item_xml_dump", self._handle, 1 if raw else 0)
        return text.encode("utf-8", "surrogateescape").decode("utf-8", "replace")

    def __repr__(self):
        known = ", ".join(f"{k}={v!r}" for k, v in self._read().items() if v is not None)
        return f"<{self.name} {known}>" if known else f"<{self.name}>"


_last_class = threading.local()


def _declared_names(declared):
    """The names of the properties of a class, which are asked for again only if it is another one than
    the last time: an answer has thousands of items of one class."""
    known = getattr(_last_class, "known", None)
    if known and _ask(ctypes.c_int32, "class_is_same", known[0], declared):
        return known[1]
    names = []
    for number in range(_ask(ctypes.c_int32, "class_property_count", declared)):
        name = ctypes.c_char_p()
        _call("class_property", declared, number, ctypes.byref(name), *[None] * 5)
        names.append(name.value.decode())
    _last_class.known = (declared, names)
    return names


class _Termination:
    """What ends one query that runs: cancel, from any thread, and on the main thread a signal of
    Python's, whose handler could not run before the query has ended."""

    _CANCEL = b"\xff"  # the number of no signal

    def __init__(self):
        self._lock = threading.Lock()  # guards the pipe, whose end makes the query end
        self._ends = None
        self.has_come = False  # whether the query was ended so

    def cancel(self):
        with self._lock:
            if self._ends:
                try:
                    os.write(self._ends[1], self._CANCEL)
                except BlockingIOError:
                    pass  # it is full of what ends the query

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
            # As an event loop sets it, the only one who does.
            signal.set_wakeup_fd(self._former, warn_on_full_buffer=False)
        with self._lock:
            ends, self._ends = self._ends, None
        try:
            came = os.read(ends[0], 4096)
        except BlockingIOError:
            came = b""
        for end in ends:
            os.close(end)
        self.has_come = bool(came)
        self._pass_on(came.replace(self._CANCEL, b""))

    def _pass_on(self, signals):
        """An event loop waits for the numbers of the signals, too."""
        if self._is_main and self._former >= 0 and signals:
            try:
                os.write(self._former, signals)
            except OSError:
                pass


class _Options(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("log_directory", ctypes.c_char_p),
                ("cache_directory", ctypes.c_char_p), ("image_directory", ctypes.c_char_p),
                ("image_user", ctypes.c_char_p)]


_Path = Union[str, bytes, os.PathLike]
_FILLS = ("machine", "memory", "cache file")


def _encoded(name):
    """A path or a name of a user, for the library; None for None."""
    if name is None:
        return None
    encoded = os.fsencode(name)
    if b"\0" in encoded:  # the library would take what stands before it
        raise ValueError(f"a NUL in {name!r}")
    return encoded


def _query_text(query):
    if not isinstance(query, str):
        raise TypeError(f"a query is a str, not {type(query).__name__}")
    return query.encode("utf-8", "surrogateescape")


class _SourceInfo(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("name", ctypes.c_char_p),
                ("arguments", ctypes.c_char_p), ("fill", ctypes.c_int32), ("state", ctypes.c_int32),
                ("is_filled", ctypes.c_int32), ("is_cut_short", ctypes.c_int32),
                ("age_seconds", ctypes.c_uint32), ("problem_count", ctypes.c_int32),
                ("rows_seen", ctypes.c_uint64), ("rows_kept", ctypes.c_uint64),
                ("microseconds", ctypes.c_uint64), ("hiding_count", ctypes.c_int32)]


class Session:
    """Where questions are asked. Used by the thread that made it; only cancel may be called from
    another. image is a directory with a Windows volume to ask instead of this machine, cache one
    where results are kept, plugins one with modules of yours; active allows statements that change
    the machine."""

    _pointer = None  # of a session that could not be made

    def __init__(self, *, image: Optional[_Path] = None, image_user: Optional[str] = None,
                 cache: Optional[_Path] = None, plugins: Optional[_Path] = None,
                 log: Optional[_Path] = None, active: bool = False):
        self._thread = threading.get_ident()
        self._pointer = ctypes.c_void_p()
        self._termination = _Termination()  # of the last query
        options = _Options(ctypes.sizeof(_Options), *map(_encoded, (log, cache, image, image_user)))
        if _call("session_create", ctypes.byref(options), ctypes.byref(self._pointer)) != 0:
            raise Error(_decoded(_library.kestra_create_error()) or "no session could be made")
        self.allow_active(active)
        if plugins is not None and _call("session_set_plugins_dir", self._pointer,
                                         _encoded(plugins)) != 0:
            self.close()
            raise Error(f"{os.fsdecode(plugins)}: no directory that plug-ins could be read from")

    def __enter__(self) -> Session:
        return self

    def __exit__(self, *_):
        self.close()

    def close(self) -> None:
        """Rows and items that are held stay as they are."""
        if self._pointer:
            self._destroy(self._own())

    def _destroy(self, pointer):
        address, pointer.value = pointer.value, None
        _call("session_destroy", ctypes.c_void_p(address))

    def __del__(self):
        # From whichever thread drops it last: none uses it any more.
        if self._pointer:
            self._destroy(self._pointer)

    def __reduce__(self):
        raise TypeError("a session cannot be copied or pickled")

    def _own(self):
        if not self._pointer:
            raise Error("the session is closed")
        if threading.get_ident() != self._thread:
            raise Error("a session is used by the thread that made it; make one for each thread")
        return self._pointer

    def allow_active(self, allow: bool = True) -> None:
        """Whether statements may change the machine from here on."""
        _call("session_allow_active", self._own(), 1 if allow else 0)

    def cancel(self) -> None:
        """Ends the query that runs, if one does. From any thread."""
        self._termination.cancel()

    def reset(self) -> None:
        """Forgets what modules were filled with, so that the next query reads the machine again."""
        _call("session_reinit_diag_root", self._own())

    def value(self, query: str, timeout: Optional[float] = None) -> Any:
        """Runs a query. A list of rows for one that has rows, else its value. timeout is in
        seconds; a module that is being filled is ended by cancel alone."""
        value, columns = self._run(query, timeout)
        if not _is("vector", value):
            return _convert(value, [])
        return [_convert(row, columns) for row in _elements(value)]

    def query(self, query: str, timeout: Optional[float] = None) -> Iterator[Any]:
        """Runs a query and iterates over its rows, each of which is made when its turn comes; a single
        value is one row. The rows may be asked for after the session is closed."""
        value, columns = self._run(query, timeout)
        if not _is("vector", value):
            return iter([_convert(value, [])])
        return (_convert(row, columns) for row in _elements(value))

    def sources(self) -> List[Source]:
        """Where the rows of the last query came from, and what could not be read there."""
        count = _ask(ctypes.c_int32, "session_source_count", self._own())
        return [self._source(number) for number in range(count)]

    def explain(self, query: str) -> str:
        """How a query would be run, in lines for a reader. Nothing is run."""
        text = _query_text(query)
        plan = ctypes.c_char_p()
        if _call("session_explain", self._own(), text, ctypes.c_size_t(len(text)),
                 ctypes.byref(plan)) != 0:
            raise self._diagnosis(text) or QueryError("<ERROR: Syntax error>")
        return _decoded(plan.value)

    def _run(self, query, timeout):
        text = _query_text(query)
        milliseconds = _NO_TIMEOUT
        if timeout is not None and not timeout * 1000 >= _NO_TIMEOUT:
            milliseconds = max(1, int(timeout * 1000))
        session = self._own()
        start = time.monotonic()
        # A handler of a signal may ask the session before this query returns, and finds one of its own.
        termination = self._termination = _Termination()
        result = ctypes.c_void_p()
        value = _Handle("value", result)
        with termination as event:
            status = _library.kestra_session_run_query_sync_n(
                session, text, ctypes.c_size_t(len(text)), event, ctypes.c_uint32(milliseconds),
                ctypes.byref(result))
        if status != 0:
            raise Error(f"kestra_session_run_query_sync_n: {status}")
        self._warn()
        if _is("error", value):
            is_over = (time.monotonic() - start + _CLOCKS_DIFFER) * 1000 >= milliseconds
            raise self._error(text, value, is_over or termination.has_come)
        return value, self.columns()

    def _warn(self):
        while (notice := _ask(ctypes.c_char_p, "session_next_notice", self._own())) is not None:
            warnings.warn(_decoded(notice), MachineWarning, stacklevel=4)

    def columns(self) -> List[str]:
        """The names of the columns of the last result, also of one without rows: what
        pandas.DataFrame(rows, columns=...) wants. None of a result that is no SELECT list."""
        columns = _take("columns", "session_columns", self._own())
        count = _ask(ctypes.c_int32, "columns_count", columns)
        names = []
        for number in range(count):
            wanted = name = _name("columns_name", columns, number)
            again = 1
            while name in names:
                again += 1
                name = f"{wanted}_{again}"
            names.append(name)
        return names

    def _source(self, number):
        info = _SourceInfo(ctypes.sizeof(_SourceInfo))
        if _call("session_source", self._own(), number, ctypes.byref(info)) != 0:
            raise Error(f"kestra_session_source: {number}")
        problems = []
        subject, reason = ctypes.c_char_p(), ctypes.c_char_p()
        while _call("session_source_problem", self._own(), number, len(problems),
                    ctypes.byref(subject), ctypes.byref(reason)) == 0:
            problems.append(Problem(_decoded(subject.value), _decoded(reason.value)))
        return Source(_decoded(info.name), _decoded(info.arguments), _FILLS[info.fill],
                      info.is_cut_short != 0, info.rows_seen, info.rows_kept,
                      info.microseconds / 1e6, info.problem_count, tuple(problems))

    def _error(self, query, value, was_ended):
        text = _text("value_as_string", value)
        if was_ended and text == "<ERROR>":
            return Ended("the query was cancelled, or its time was over")
        if diagnosis := self._diagnosis(query):
            return diagnosis
        reason = _name("session_last_message", self._own())
        return QueryError(f"{text} {reason}" if reason and reason not in text else text)

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
