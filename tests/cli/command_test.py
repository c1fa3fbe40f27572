"""Options, texts and exit statuses of the command."""
import os
import tempfile
import unittest

from kestra_command import SYNTAX_ERROR, CommandTest, main


class Expressions(CommandTest):
    def test_numbers_end_before_the_reserved_one(self):
        self.check(["--format", "text", "2147483645 + 1"], out=b"2147483646\n", err=b"")
        err = self.check(["--format", "text", "2147483646 + 1"], status=1, out=b"").stderr
        self.assertRegex(err, rb"^<ERROR>\nkestra: a value could not be computed: .*\n$")

    def test_first_query_finds_every_module(self):
        self.check(["--", "DROP MODULE *"], out=b"53\n", err=b"")

    def test_time_out_zero_only_parses(self):
        self.check(["--timeout", "0", "1 + 1"], out=b"<NULL>\n", err=b"")
        result = self.check(["--timeout", "0", "1 +"], status=1, out=b"")
        self.assertTrue(result.stderr.startswith(SYNTAX_ERROR), result)

    def test_order_and_limit(self):
        query = "SELECT PID, ImageName FROM Processes.Process"
        for name in ("pid:desc", "PID:DESC"):
            out = self.check(["--format", "text", "--sort", name, "--limit", "3", query]).stdout
            numbers = [int(line.split(b"\t")[0]) for line in out.splitlines()]
            self.assertEqual(len(numbers), 3)
            self.assertEqual(numbers, sorted(numbers, reverse=True))
        result = self.check(["--limit", "1", query])
        self.assertRegex(result.stderr, rb"(?m)^kestra: 1 of \d+ rows shown$")
        self.check(["--limit", "5", "1 + 1"], out=b"2\n", err=b"")
        self.check(["--limit", "0", "SELECT FileName FROM FILES.FILE('/etc/passwd')"], out=b"",
                   err=b"kestra: 0 of 1 rows shown\n")
        self.check(["--sort", "IamgeName", query], status=2, out=b"",
                   err=b'kestra: the result has no column "IamgeName" to sort by; '
                       b"did you mean ImageName?\n")
        for number in ("-1", "many", "99999999999"):
            self.check(["--limit", number, query], status=2, out=b"")

    def test_change_is_refused_without_active(self):
        result = self.check(["DELETE Processes.Process WHERE PID = 1"], status=1, out=b"")
        self.assertTrue(result.stderr.startswith(b"<ERROR"), result)

    def test_reason_follows_the_error(self):
        for format in "text", "table", "csv", "json", "jsonl":
            result = self.check(["--format", format, "SELECT NoSuch FROM Processes.Process"],
                                status=1, out=b"")
            self.assertEqual(result.stderr.split(b"\n")[0] + b"\n", SYNTAX_ERROR)


class Usage(CommandTest):
    def test_wrong_usage(self):
        cases = [
            ["--no-such-option", "1"], ["--format", "yaml", "1"], ["--format", "", "1"],
            ["--format"], ["--check", "--explain", "1"],
            ["--timeout", "soon", "1"], ["--timeout", "-1", "1"],
            ["--timeout", "4294967296", "1"], ["--log", "/no/such/directory", "1"],
            ["--log", "/etc/passwd", "1"], ["-f", "/no/such/file"], ["-f", "/etc"],
            ["-f", "/etc/passwd", "1 + 1"], ["SELECT", "1"], ["--image", "/", "1"],
            ["--plugins", "/etc/passwd", "1"], ["--plugins", "/no/such", "1"],
            ["--cache", "/etc/passwd", "1"], ["--cache", "/no/such", "1"],
        ]
        for arguments in cases:
            result = self.check(arguments, status=2, out=b"")
            self.assertTrue(result.stderr.startswith(b"kestra: "), result)

    def test_words_that_are_too_many(self):
        cases = [
            (["--fromat", "csv", "1"], b"there is no option --fromat; did you mean --format?"),
            (["1", "--stat=x"], b"there is no option --stat; did you mean --stats or --sort?"),
            (["-x"], b"stands behind --"),
            (["SELECT", "PID"], b"the query is one argument"),
            (["1", "-"], b"the query is one argument"),
        ]
        for arguments, piece in cases:
            self.assertIn(piece, self.check(arguments, status=2, out=b"").stderr, arguments)

    def test_help_and_version(self):
        self.assertIn(b"--timeout", self.check(["--help"], err=b"").stdout)
        self.assertRegex(self.check(["--version"], err=b"").stdout, rb"^kestra \d+\.\d+\.\d+\n$")

    def test_check_is_silent(self):
        cases = [("1 + 1", 0), ("1 +", 1), ("", 1), ("1; 2 +", 1), ("1 + 1; 2 + 2;", 0),
                 ("DELETE Processes.Process", 0)]
        for query, status in cases:
            self.check(["--check", "--", query], status=status, out=b"", err=b"")

    def test_log_goes_where_it_is_wanted(self):
        with tempfile.TemporaryDirectory() as directory:
            self.check(["--log", directory, "1 + 1"], out=b"2\n")
            self.assertTrue(any(name.endswith(".log") for name in os.listdir(directory)),
                            os.listdir(directory))

    def test_log_that_cannot_be_written_stops_nothing(self):
        with tempfile.TemporaryDirectory() as directory:
            os.mkdir(directory + "/libkestra_kestra.log")
            self.check(["--log", directory, "1 + 1"], out=b"2\n", err=b"")
        self.check(["--log", "/proc", "1 + 1"], out=b"2\n", err=b"")


class Texts(CommandTest):
    def test_queries_are_separated(self):
        cases = [
            ("1 + 1; 2 + 2", b"2\n4\n"),
            ("1 + 1;", b"2\n"),
            (" ;; /* ; */ ; 1 + 1 ; ;", b"2\n"),
            ("'a;b'; 'c'", b"a;b\nc\n"),
            ("1 /* ; ' */ + 1", b"2\n"),
        ]
        for text, out in cases:
            self.check(["--", text], out=out, err=b"")
            self.check([], stdin=text.encode(), out=out, err=b"")
            self.check(["-f", "-"], stdin=text.encode(), out=out, err=b"")

    def test_first_error_stops(self):
        result = self.check(["1 + 1; 1 +; 2 + 2"], status=1, out=b"2\n")
        self.assertTrue(result.stderr.startswith(SYNTAX_ERROR), result)

    def test_state_lasts_from_query_to_query(self):
        self.check(["DROP MODULE *; DROP MODULE *"], out=b"53\n0\n")

    def test_nothing_to_do(self):
        for text in b"", b"\n", b"; ;", b"/* nothing */":
            self.check([], stdin=text, out=b"", err=b"")
        result = self.check([""], status=1, out=b"")
        self.assertTrue(result.stderr.startswith(SYNTAX_ERROR), result)

    def test_bad_texts_end_as_errors(self):
        cases = [
            b"'not closed", b"/* not closed", b"'not closed; 1 + 1", b"\xff\xfe", b"\xc3",
            b"(" * 30000, b"((((" + b")" * 5, b"NOT " * 65535, b"1 + " * 32768 + b"1",
            b"1," * 32768, b"SELECT " * 1000, b"=" * 70000, b"'" * 65537, b"\x1b[31m",
        ]
        for text in cases:
            result = self.run_command("-f", "-", stdin=text)
            self.assertEqual((result.returncode, result.stdout), (1, b""), (text[:40], result))
            self.assertTrue(result.stderr.startswith(b"<ERROR"), result.stderr[:200])

    def test_unusual_texts_are_read(self):
        self.check(["-f", "-"], stdin=b"1\0+\0 1", out=b"2\n")
        self.check(["-f", "-"], stdin=b"'a\0b'", out=b"a\0b\n")
        self.check(["-f", "-"], stdin=b"'\xff'", out=b"\xff\n")
        self.check(["-f", "-"], stdin=b"1\r\n+\t1", out=b"2\n")

    def test_longest_texts_have_a_value(self):
        elements = 32768  # 65535 tokens with the commas
        result = self.check(["-f", "-"], stdin=b"'a'," * (elements - 1) + b"'a'")
        self.assertEqual(result.stdout, b"a\n" * elements)
        result = self.run_command("-f", "-", stdin=b"1 + " * (elements - 1) + b"1")
        self.assertIn((result.returncode, result.stdout), [(0, b"%d\n" % elements), (1, b"")])

    def test_file_is_not_read_without_end(self):
        result = self.check(["-f", "/dev/zero"], status=2, out=b"")
        self.assertIn(b"longer than", result.stderr)


main()
