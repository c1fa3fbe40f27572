"""The library in a host that has loaded it for itself alone, and its XML read by a parser of others."""
import ctypes
import os
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml

LIBRARY, PLUGINS = sys.argv[1:3]
del sys.argv[1:]
NO_TIMEOUT = 0xFFFFFFFF

# Everything but control characters; some of it takes four bytes, and some is no UTF-8.
NAMES = ["plain", "a&b", "<tag>", "\"quoted\"", "it's", "tab\there", "gr\u00fc\u00dfe", "\u4e2d\u6587",
         "\U0001f600", "]]>", "&#7;", "line\nend", " blanks "]


class Host(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.kestra = ctypes.CDLL(LIBRARY)  # as Python does it: its names are for it alone

    def setUp(self):
        self.session = ctypes.c_void_p()
        self.assertEqual(self.kestra.kestra_session_create(None, ctypes.byref(self.session)), 0)
        self.addCleanup(lambda: self.kestra.kestra_session_destroy(self.session))

    def run_query(self, query):
        value = ctypes.c_void_p()
        self.assertEqual(self.kestra.kestra_session_run_query_sync(
            self.session, query.encode(), None, ctypes.c_uint32(NO_TIMEOUT),
            ctypes.byref(value)), 0)
        self.addCleanup(lambda: self.kestra.kestra_value_release(value))
        return value

    def text_of(self, value):
        text = ctypes.c_char_p()
        self.kestra.kestra_value_as_string(value, ctypes.byref(text), None)
        return text.value.decode()

    def items_of(self, value):
        values, count = ctypes.c_void_p(), ctypes.c_int32()
        self.kestra.kestra_value_as_vector(value, ctypes.byref(values))
        self.kestra.kestra_values_count(values, ctypes.byref(count))
        self.addCleanup(lambda: self.kestra.kestra_values_release(values))
        for number in range(count.value):
            element, item = ctypes.c_void_p(), ctypes.c_void_p()
            self.kestra.kestra_values_value(values, number, ctypes.byref(element))
            self.kestra.kestra_value_as_vdiag_item(element, ctypes.byref(item))
            yield item
            self.kestra.kestra_item_release(item)
            self.kestra.kestra_value_release(element)

    def test_plugins_find_what_they_need(self):
        self.assertEqual(self.kestra.kestra_session_set_plugins_dir(self.session,
                                                                    PLUGINS.encode()), 0)
        value = self.run_query("SELECT COUNT(*) FROM Mounts.Mount")
        with open("/proc/self/mounts", encoding="utf-8") as mounts:
            self.assertEqual(int(self.text_of(value)), len(mounts.readlines()))

    def test_dumps_are_xml(self):
        with tempfile.TemporaryDirectory() as directory:
            for name in NAMES:
                with open(os.path.join(directory, name), "w", encoding="utf-8"):
                    pass
            value = self.run_query(f"SELECT * FROM FILES.FILE('{directory}/*')")
            for form in 0, 1:
                found = set()
                for item in self.items_of(value):
                    text, length = ctypes.c_char_p(), ctypes.c_size_t()
                    self.assertEqual(self.kestra.kestra_item_xml_dump(
                        item, form, ctypes.byref(text), ctypes.byref(length)), 0)
                    root = xml.fromstring(ctypes.string_at(text, length.value))
                    self.assertEqual((root.tag, root.get("n")), ("I", "File"))
                    found.add(next(p.text for p in root if p.get("n") == "FileName"))
                self.assertEqual(found, set(NAMES), form)


unittest.main(verbosity=2)
