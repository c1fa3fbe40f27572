"""The queries of the documents: each is run as a user would copy it.

In a block of ```sh each line is a command, which must succeed. In a block of ```sql a line is a query, but for a block of CREATE PROCEDURE, which is one. Behind a query
stands, in a comment that begins with "= ", what it gives; without one it must give no Error. The man page,
the completion of the shell and the help speak of the same options."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import kestra_command

SOURCE = pathlib.Path(os.environ["KESTRA_SOURCE"])
BLOCK = re.compile(r"```sql\n(.*?)```", re.S)
EXPECTED = re.compile(r" /\* = (.*?) \*/$", re.S)


def queries(block):
    """Pairs of a query and what it gives (None: no Error)."""
    if block.startswith("CREATE PROCEDURE"):
        return [(block, None)]
    # A comment may hold several lines; what looks like one in a string is none.
    lines = re.findall(r"(?:'[^'\n]*'|/\*.*?\*/|[^'\n])+", block, re.S)
    found = []
    for line in lines:
        given = EXPECTED.search(line)
        found.append((EXPECTED.sub("", line).strip(), given.group(1) if given else None))
    return found


class DocumentsTest(kestra_command.CommandTest):
    def test_recipes(self):
        lines = [line for block in re.findall(r"```sh\n(.*?)```", (SOURCE / "docs/recipes.md").read_text(
            "utf-8"), re.S) for line in block.splitlines()]
        self.assertGreater(len(lines), 10)
        with tempfile.TemporaryDirectory() as root:
            os.symlink(os.path.abspath(kestra_command.COMMAND), os.path.join(root, "kestra"))
            environment = {**os.environ, "PATH": root + ":" + os.environ["PATH"]}
            for line in lines:
                result = subprocess.run(["bash", "-o", "pipefail", "-c", line], cwd=root, env=environment,
                                        capture_output=True, timeout=60)
                with self.subTest(line=line):
                    # head may end a pipe before its writer is through
                    self.assertIn(result.returncode, (0, 141), result)

    def test_queries(self):
        documents = [*SOURCE.glob("docs/*.md"), SOURCE / "README.md"]
        count = 0
        for document in documents:
            for block in BLOCK.findall(document.read_text("utf-8")):
                for query, expected in queries(block):
                    with self.subTest(document=document.name, query=query):
                        count += 1
                        result = self.run_command("--format", "text", query)
                        shown = (result.stdout if result.returncode == 0 else
                                 result.stderr.split(b"\n")[0]).decode("utf-8", "replace")
                        if expected is None:
                            self.assertEqual(result.returncode, 0, result)
                        else:
                            self.assertEqual(shown.rstrip("\n"), expected)
        self.assertGreater(count, 60)

    def test_options_are_told_everywhere(self):
        shown = self.check(["--help"]).stdout.decode()
        options = set(re.findall(r"(--[a-z][a-z-]*)", shown))
        page = (SOURCE / "docs/man/kestra.1").read_text("utf-8").replace("\\-", "-")
        completion = (SOURCE / "packaging/kestra.bash").read_text("utf-8")
        for option in options:
            with self.subTest(option=option):
                self.assertIn(option, page)
                self.assertRegex(completion, re.escape(option) + r"[\s')|]")
        self.assertEqual(set(re.findall(r"(--[a-z][a-z-]+)", completion)) - options, set())
        formats = re.search(r"'(table [a-z ]+)'", completion).group(1).split()
        for name in formats:
            self.check(["--format", name, "1"])

    def test_bash_completes(self):
        script = SOURCE / "packaging/kestra.bash"
        for line, expected in ((["kestra", "--form"], "--format"),
                               (["kestra", "--format", "jso"], "json jsonl"),
                               (["kestra", "--format", "=", "cs"], "csv"),
                               (["kestra", "--exp"], "--explain")):
            words = " ".join(f"'{word}'" for word in line)
            program = (f". '{script}'; COMP_WORDS=({words}); COMP_CWORD={len(line) - 1}; _kestra; "
                       "echo ${COMPREPLY[*]}")
            result = subprocess.run(["bash", "-c", program], capture_output=True, text=True,
                                    timeout=20, check=True)
            self.assertEqual(result.stdout.strip(), expected, line)

    def test_man_page_is_well_formed(self):
        page = SOURCE / "docs/man/kestra.1"
        result = subprocess.run(["man", "--warnings", "-l", str(page)], capture_output=True,
                                text=True, timeout=20, env={**os.environ, "MANPAGER": "cat"})
        self.assertEqual(result.stderr, "")
        self.assertIn("EXIT STATUS", result.stdout)


if __name__ == "__main__":
    kestra_command.main()
