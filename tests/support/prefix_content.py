"""What a prefix of Wine is filled with for tests that ask it in two ways.

    from prefix_content import fill
    fill(prefix)                        # a WinePrefix; what an earlier call put there is replaced

The registry is filled by Wine's own tools, so that what is read is what another program wrote. When
fill returns, the prefix's server has gone and its files are written.
"""
import os
import shutil

FOLDER = "Kestra Data"  # below C:\
KEY = "Kestra Rows"     # below Software, the classes and so on

# Name, content, time of the last write (seconds since 1970), attributes for Wine's attrib.
FILES = [
    ("ReadMe.Txt", b"first line\r\nsecond line\r\nthird, with \xc3\xbc\r\n\r\nlast, no end", 981173106, ""),
    ("lower.txt", b"one\ntwo\n", 1000000000, ""),
    ("UPPER.TXT", b"mixed\r\nends\nhere\r", 1000000000, ""),
    ("Gr\u00fc\u00dfe.txt", "Gr\u00fc\u00dfe an alle".encode(), 1700000000, ""),
    ("\u65e5\u672c\u8a9e.txt", b"kanji in the name", 1700000001, ""),
    ("\U0001f600 smile.txt", b"beyond the first plane", 1700000001, ""),
    ("a[1];b'c.txt", b"signs of a query", 1700000002, ""),
    ("no extension", b"x", 1700000003, ""),
    ("empty.dat", b"", 1111111111, ""),
    ("large.bin", bytes(range(256)) * 300, 1222222222, ""),
    ("long line.txt", b"x" * 2000 + b"\r\nshort\r\n", 1222222223, ""),
    ("latin.txt", b"na\xefve\r\ncaf\xe9\r\n", 1222222224, ""),
    ("before 1970.txt", b"old", -86400, ""),
    ("after 2106.txt", b"young", 4400000000, ""),
    ("readonly.txt", b"locked", 1300000000, "+r"),
    ("hidden.txt", b"unseen", 1300000001, "+h"),
    ("system.txt", b"theirs", 1300000002, "+s"),
    ("all three.txt", b"all", 1300000003, "+r +h +s"),
    (".dotted.txt", b"never listed", 1300000004, ""),
    ("same.txt", b"lower", 1300000005, ""),
    ("SAME.txt", b"upper case", 1300000006, ""),
    ("n" * 251 + ".txt", b"as long as a name may be", 1300000007, ""),
    ("Sub/Deep/deepest.txt", b"deep", 1400000000, ""),
    ("Sub/sub.txt", b"sub", 1400000001, ""),
    ("SUB TWO/two.txt", b"two", 1400000002, ""),
    ("Hidden Folder/inside.txt", b"in", 1400000003, ""),
    (".dotted/in.txt", b"not listed, and named", 1400000004, ""),
    ("Far/" + "/".join(f"a name of fifty characters and a path of many, {i:03}" for i in range(7))
     + "/bottom.txt", b"beyond 260 characters", 1400000005, ""),
    ("Case/\u03c9.txt", b"omega", 1400000006, ""),
    ("Case/\u00ff.txt", b"y with diaeresis", 1400000007, ""),
    ("Case/\u03c2.txt", b"sigma at the end of a word", 1400000008, ""),
    ("crlf.ini", b"top=outside\r\n; a comment\r\n[First]\r\nname = value with blanks  \r\nnumber=42\r\n"
                 b"zeros=007\r\nlargest=4294967294\r\nnone=4294967295\r\nempty=\r\nquoted=\"in quotes\"\r\n"
                 b"sign='single'\r\nequals=a=b=c\r\n[Second]\r\nkey=1\r\n[first]\r\nname=again\r\nextra=2\r\n",
     1500000000, ""),
    ("lf.ini", b"[one]\na=1\nb=two\n\n[two]\n# number sign\na=\t3\nwithout sign\n=without name\n[]\nafter=x",
     1500000001, ""),
    ("utf8.ini", "[Sch\u00f6n]\r\n\u00dcber=\u00e4\u00f6\u00fc\u20ac\r\n".encode(), 1500000002, ""),
    ("marked.ini", b"\xef\xbb\xbf[s]\r\nk=v\r\n", 1500000003, ""),
    ("latin.ini", b"[caf\xe9]\r\nna\xefve=\xfcber\r\n", 1500000004, ""),
    ("empty.ini", b"", 1500000005, ""),
    ("tree.cfg", b"top=1\r\n[outer]\r\nkey=a\r\n[inner]\r\nkey=b\r\n[]\r\nlast=c\r\n[]\r\n[outer]\r\nkey=d\r\n[]\r\n",
     1500000006, ""),
    ("wide.ini", "\ufeff[wide]\r\nkey=value\r\n".encode("utf-16-le"), 1500000007, ""),
]

# Files that are one hole, in bytes.
HOLES = [("Holes/huge.bin", 5 << 30), ("Holes/small.bin", 1 << 20)]

# Name and target. Absolute ones lead out of the volume.
LINKS = [
    ("Links/folder", "../Sub"),
    ("Links/file.txt", "../lower.txt"),
    ("Links/nowhere.txt", "none"),
    ("Links/round.txt", "round.txt"),
    ("Links/out", "/"),
]

# Of each type, with content that fits its type and content that does not.
VALUES = r'''
@="default"
"text"="a text"
"empty text"=""
"signs"="C:\\Path \"quoted\"; 'single' %windir%"
"Größe"="äöü€"
"back\\slash"="in the name"
"UPPER"="case"
"tab"="one	two"
"number"=dword:0000002a
"largest"=dword:ffffffff
"binary"=hex:00,01,0a,10,ff
"no bytes"=hex:
"expand"=hex(2):25,00,77,00,69,00,6e,00,64,00,69,00,72,00,25,00,00,00
"none"=hex(0):01,02
"big endian"=hex(5):00,00,00,2a
"link"=hex(6):41,00,42,00
"multi"=hex(7):6f,00,6e,00,65,00,00,00,74,00,77,00,6f,00,00,00,00,00
"multi empty"=hex(7):00,00
"multi with gap"=hex(7):61,00,00,00,00,00,62,00,00,00,00,00
"resources"=hex(8):01,02,03
"descriptor"=hex(9):04,05
"requirements"=hex(a):06
"quad"=hex(b):2a,00,00,00,00,00,00,00
"of no type"=hex(1234):01
"no end"=hex(1):41,00,42,00
"end within"=hex(1):41,00,00,00,42,00,00,00
"half a character"=hex(1):41,00,42
"lone surrogate"=hex(1):41,00,00,d8,42,00,00,00
"pair"=hex(1):3d,d8,00,de,00,00
"short number"=hex(4):01,02
"long number"=hex(4):01,00,00,00,02
'''

KEYS = rf'''
[ROOT\Sub One]
"Version"="1.10"
[ROOT\sub two]
"Version"="1.9"
"v2"="x"
[ROOT\Sub One\Deep\Deeper]
"bottom"=dword:00000001
[ROOT\Ünter [brackets]]
"Version"="not a version"
[ROOT\x * y]
"star"="*"
[ROOT\Empty]
[ROOT\lone \uD800 surrogate]
"lone \uDC00"="too"
'''.replace("\\uD800", "\ud800").replace("\\uDC00", "\udc00")

LONG = f'''
"{"n" * 300}"="{"t" * 5000}"
"much"=hex:{",".join(["ab"] * 3000)}
[ROOT\\{"k" * 255}]
"inside"="a key with a long name"
'''

# The keys that the registry is filled below; the value "where" tells them apart.
ROOTS = [
    r"HKEY_LOCAL_MACHINE\Software",
    r"HKEY_LOCAL_MACHINE\Software\Wow6432Node",
    r"HKEY_CURRENT_USER\Software",
    r"HKEY_USERS\.Default\Software",
    r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control",
    r"HKEY_LOCAL_MACHINE\Software\Classes",
    r"HKEY_LOCAL_MACHINE\Software\Classes\CLSID",
    r"HKEY_LOCAL_MACHINE\Software\Classes\Wow6432Node\CLSID",
    r"HKEY_CURRENT_USER\Software\Classes",
]


def fill(prefix):
    prefix.wait()
    folder = os.path.join(prefix.path, "drive_c", FOLDER)
    _fill_files(prefix, folder)
    _fill_registry(prefix, folder)
    _set_times(folder)
    prefix.wait()


def _fill_files(prefix, folder):
    shutil.rmtree(folder, ignore_errors=True)
    for name, content, _, _ in FILES:
        path = os.path.join(folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
    for name, size in HOLES:
        path = os.path.join(folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.truncate(size)
    for name, target in LINKS:
        path = os.path.join(folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        os.symlink(target, path)
    # One by one: of several marks at once Wine 8 sets the last.
    lines = [f'attrib {mark} "C:\\{FOLDER}\\{name}"' for name, _, _, marks in FILES
             for mark in marks.split()]
    lines.append(f'attrib +h "C:\\{FOLDER}\\Hidden Folder"')
    script = os.path.join(folder, "fill.bat")
    with open(script, "w", encoding="ascii", newline="\r\n") as file:
        file.write("\n".join(["@echo off", *lines, ""]))
    prefix.run("cmd", "/c", rf"C:\{FOLDER}\fill.bat")
    os.remove(script)


def _fill_registry(prefix, folder):
    text = "Windows Registry Editor Version 5.00\n"
    for root in ROOTS:
        key = f"{root}\\{KEY}"
        escaped = root.replace("\\", "\\\\")
        content = VALUES + (LONG if root == ROOTS[0] else "") + KEYS
        text += f'\n[-{key}]\n[{key}]\n"where"="{escaped}"' + content.replace("ROOT", key)
    script = os.path.join(folder, "fill.reg")
    with open(script, "wb") as file:
        file.write(("\ufeff" + text).replace("\n", "\r\n").encode("utf-16-le", "surrogatepass"))
    prefix.run("regedit", "/s", rf"C:\{FOLDER}\fill.reg")
    os.remove(script)


def _set_times(folder):
    for name, _, seconds, _ in FILES:
        path = os.path.join(folder, name)
        os.utime(path, (seconds + 60, seconds))
    for directory, _, _ in os.walk(folder):
        os.utime(directory, (1600000000, 1600000000))
