"""What the command says of a query that is wrong, or right and suspicious."""
from kestra_command import SYNTAX_ERROR, CommandTest, main


class Errors(CommandTest):
    def lines_behind_error(self, *arguments):
        result = self.check(arguments, status=1, out=b"")
        lines = result.stderr.decode().split("\n")
        self.assertTrue(lines[0].startswith("<ERROR"), result)
        return lines[1:-1]

    def test_place_and_sentence_follow_a_syntax_error(self):
        result = self.check(["SELECT name FROM Processes.Process"], status=1, out=b"")
        self.assertTrue(result.stderr.startswith(
            SYNTAX_ERROR +
            b"SELECT name FROM Processes.Process\n"
            b"       ^~~~\n"
            b"kestra: line 1, column 8: there is no column \"name\" here; did you mean ImageName"),
            result)

    def test_caret_stands_under_wide_characters_and_tabs(self):
        lines = self.lines_behind_error("SELECT 1\n\t+ LEN('\u65e5\u672ce\u0301') +* 2")
        self.assertEqual(lines[0], " + LEN('\u65e5\u672ce\u0301') +* 2")
        self.assertEqual(lines[1], " " * 17 + "^")
        self.assertTrue(lines[2].startswith("kestra: line 2, column 17: "), lines)

    def test_long_line_is_cut(self):
        lines = self.lines_behind_error("1 + " * 5000 + "'a'" + " + 1" * 5000)
        self.assertLess(len(lines[0]), 200)
        self.assertEqual(lines[0][lines[1].index("^"):][:3], "'a'")

    def test_empty_text_has_no_line(self):
        self.assertEqual(self.lines_behind_error(""),
                         ["kestra: line 1, column 1: the text is empty"])

    def test_argument_is_explained_by_its_place(self):
        lines = self.lines_behind_error("SELECT * FROM Processes(Lvl=1).Process")
        self.assertEqual(lines[1], " " * 24 + "^~~")
        self.assertIn('Processes has no argument "Lvl"', lines[2])
        self.assertEqual(len(lines), 3)

    def test_numbered_message_has_a_sentence(self):
        self.assertEqual(self.lines_behind_error("DELETE Processes.Process WHERE PID = 1"),
                         ["kestra: changes are off; --active allows them"])

    def test_places_are_those_of_the_file(self):
        text = (b"SELECT COUNT(*) FROM Processes.Process;\n\n"
                b"/* \xc3\xa4; */ 1; SELECT\n nmae FROM Processes.Process; 2\n")
        result = self.check([], status=1, stdin=text)
        self.assertTrue(result.stderr.endswith(b" nmae FROM Processes.Process; 2\n ^~~~\n" +
                                               result.stderr.splitlines(True)[-1]), result)
        self.assertIn(b"kestra: line 4, column 2: there is no column", result.stderr)
        result = self.check([], status=1, stdin=b"1;\n\xc3\xa4; 1; 1 +\n")
        self.assertIn(b"kestra: line 2, column 1: \"\xc3\xa4\" cannot stand", result.stderr)
        result = self.check([], status=1, stdin=b"1;\n/* \xc3\xa4 */ 1; 1 +\n")
        self.assertIn(b"kestra: line 2, column 15: the text ends", result.stderr)
        result = self.check([], status=1, stdin=b"1;\n\n DELETE Processes.Process WHERE PID = 1;")
        self.assertIn(b"kestra: the query begins on line 3\n", result.stderr)

    def test_command_tells_what_it_has_instead(self):
        lines = self.lines_behind_error("SELECT PID FROM Processes.Process ORDER BY PID")
        self.assertIn("there is no ORDER BY", lines[2])
        self.assertEqual(lines[3], "kestra: --sort COLUMN sorts what is shown")

    def test_a_dot_is_taken_for_a_command_at_the_beginning_alone(self):
        hint = "kestra: commands with a dot belong to the shell"
        self.assertTrue(self.lines_behind_error(" .modules")[-1].startswith(hint))
        for text in ("DROP MODULE Processes.Process", "SELECT * FROM .Process"):
            self.assertNotIn(hint, "\n".join(self.lines_behind_error(text)))

    def test_a_source_that_was_not_filled_is_named_with_the_reason(self):
        one_path = "exactly one of DirPath and FilePath is to be given"
        one_key = "exactly one of KeyPath and ValuePath is to be given"
        cases = {
            "Files(Levels=1).File": one_path,
            "Files(DirPath='/a',FilePath='/b').File": one_path,
            "Files(DirPath='/',Levels=101).File": "Levels is 100 at the most",
            "Files(DirPath='/',Timeout=3600001).File": "Timeout is 3600000 at the most",
            "Files(FilePath='passwd').File": "FilePath names no directory",
            "Files(DirPath='%no%').File":
                "the path begins with a %name% that is no folder of this machine",
            "Registry.RegistryKey": one_key,
            "Registry(KeyPath='HKLM',ValuePath='HKLM\\a').RegistryKey": one_key,
            "Registry(ValuePath='HKLM').RegistryKey": "ValuePath names no key",
            "Registry(KeyPath='HKXX\\a').RegistryKey":
                "the path does not begin with a hive, such as HKLM",
            "Registry(KeyPath='HKLM',Levels=101).RegistryKey": "Levels is 100 at the most",
        }
        for source, reason in cases.items():
            name = source[:source.rindex(".")]
            with self.subTest(source):
                self.assertEqual(
                    self.lines_behind_error("SELECT * FROM " + source)[0],
                    f"kestra: {name} could not be read with these arguments: {reason}")
        # Beside a message of the system's.
        self.assertEqual(self.lines_behind_error("SELECT * FROM IniFile.IniKey"),
                         ["kestra: The filename, directory name, or volume label syntax is incorrect.",
                          "kestra: IniFile could not be read with these arguments: "
                          "Path is to be given"])

    def test_result_of_nothing_is_doubted(self):
        result = self.check(["--format", "text", "SELECT COUNT(*) FROM Processes.Proces"],
                            out=b"0\n")
        self.assertIn(b"kestra: note: line 1, column 32: Processes has no class", result.stderr)
        result = self.check(["--format", "text", "SELECT PID FROM Processes.Process "
                             "WHERE ImageName LIKE '%no such%'"], out=b"")
        self.assertIn(b"did you mean '*no such*'?", result.stderr)
        self.check(["--format", "text", "SELECT PID FROM Processes.Process WHERE PID = 0 - 1"],
                   out=b"", err=b"")


if __name__ == "__main__":
    main()
