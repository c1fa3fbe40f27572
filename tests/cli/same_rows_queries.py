"""The queries of same_rows_test.py: over what prefix_content.py puts into a prefix, and over what
Wine puts there itself. {data} stands for the folder and {key} for the name of the keys.

Columns that are never asked for: ShortPathName, since Wine makes such names up out of the long ones
and no disk has them; CreationTime, for which Wine 8 gives the time of the last write; and
LastAccessTime, which a look from either side changes.
"""
import re

from prefix_content import FOLDER, KEY

ROWS, NONE, ERROR = "rows", [], ["Error: <ERROR>"]


class Row:
    """A query and what both sides must answer: at least one row (ROWS), or these lines.

    image      where --image must answer something else, what that is; the comment says why
    unordered  the order is that of a directory, which is Wine's own on one side and the disk's on
               the other
    live_only  what the lines of Wine alone look like, of which --image must have none
    image_only the other way round
    """

    def __init__(self, query, live=ROWS, image=None, unordered=False, live_only=None,
                 image_only=None):
        self.query = query.replace("{data}", "C:\\" + FOLDER).replace("{key}", KEY)
        self.live, self.image, self.unordered = live, image, unordered
        self.live_only, self.image_only = live_only, image_only

    def fault(self, live, image):
        """What is wrong with the lines of the two sides, as two lists that should be alike; None if
        nothing is."""
        if self.unordered:
            live, image = sorted(live), sorted(image)
        if self.image is not None:
            is_good = live == self.live and image == self.image
            return None if is_good else (self.live + self.image, live + image)
        live = _without(live, self.live_only)
        image = _without(image, self.image_only)
        if live != image:
            return live, image
        if self.live == ROWS:
            is_good = live != [] and not live[0].startswith("Error: ")
            return None if is_good else (["(rows)"], live)
        return None if live == self.live else (self.live, live)


def _without(lines, pattern):
    return [line for line in lines if pattern is None or not re.search(pattern, line)]


def files(query, live=ROWS, **more):
    return Row(query, live, unordered=True, **more)


FILE = ("Path, FileName, FileVersion, ProductVersion, FileDescription, Copyright, Comments, "
        "CompanyName, InternalName, OriginalFilename, ProductName, Size, LastWriteTime, Attributes, "
        "FileText")
VALUE = "Path, Name, Type, StringValue, DWORDValue"
NT = r"Microsoft\Windows NT\CurrentVersion"

REGISTRY = [
    # The module: every type of value, every kind of name, each view.
    Row(r"SELECT * FROM Registry(KeyPath='HKLM64\Software\{key}', Levels=9).RegistryKey"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM64\Software\{key}', Levels=9).RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM\Software\{key}', Levels=9).RegistryKey"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM\Software\{key}', Levels=9).RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM64\Software\Wow6432Node\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM\Software\Wow6432Node\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKCU\Software\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKCU64\Software\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKCU\Software\Classes\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKU64\.DEFAULT\Software\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKU\*\Software\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKEY_CLASSES_ROOT64\CLSID\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKCR\CLSID\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM\Software\Classes\CLSID\{key}').RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM64\Software\Wow6432Node\Classes\CLSID\{key}')"
        ".RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM64\System\CurrentControlSet\Control\{key}')"
        ".RegistryValue"),
    Row(r"SELECT * FROM Registry(KeyPath='HKLM\System\CurrentControlSet\Control\{key}')"
        ".RegistryValue"),
    # Through links to the other view.
    Row(r"SELECT Path FROM Registry(KeyPath='HKLM\Software\Classes\AppId\*').RegistryKey"),
    Row(rf"SELECT {VALUE} FROM REGISTRY.REGISTRYVALUE('HKLM\Software\{NT}\Time Zones\U*\*')"),
    # Wildcards and patterns.
    Row(r"SELECT Path FROM Registry(KeyPath='HKLM64\Software\{key}\s*').RegistryKey"),
    Row(r"SELECT Path, DWORDValue FROM Registry(KeyPath='HKLM64\Software\{key}\*\D??p\*', "
        "ValueName='B*').RegistryValue"),
    Row(r"SELECT Path, DWORDValue FROM Registry(ValuePath='hklm64\SOFTWARE\{key}\SUB ONE\deep\*"
        r"\BOT*').RegistryValue"),
    Row(r"SELECT Name, StringValue FROM Registry(ValuePath='HKLM64\Software\{key}\multi*', "
        "MultiSZSeparator='+').RegistryValue"),
    Row("SELECT Name FROM Registry(ValuePath='HKLM64\\Software\\{key}\\gR\u00d6\u00dfE')"
        ".RegistryValue"),
    Row("SELECT Path FROM Registry(KeyPath='HKLM64\\Software\\{key}\\\u00fcNTER [b*').RegistryKey"),
    Row(r"SELECT Path FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\back*')"),
    # WHERE and joins.
    Row(r"SELECT k.Path, v.Name, v.StringValue FROM Registry(KeyPath='HKLM64\Software\{key}\*')"
        ".RegistryKey k JOIN Registry.RegistryValue v ON v.ATTACHEDTO = k.ITEMID"),
    Row(r"SELECT Path, LastWriteTime FROM Registry(KeyPath='HKLM64\Software\{key}').RegistryKey "
        "WHERE LastWriteTime > '2020-01-01' AND LastWriteTime <= GETDATE()"),
    Row(r"SELECT Name, Type FROM Registry(KeyPath='HKLM64\Software\{key}').RegistryValue "
        "WHERE Type IN ('Binary', 'Link', 'None') OR DWORDValue = 42"),
    Row(r"SELECT a.Name, b.Name FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\*') a JOIN "
        r"REGISTRY.REGISTRYVALUE('HKLM\Software\{key}\*') b ON a.StringValue = b.StringValue "
        "WHERE a.Name <> b.Name"),
    # The sources.
    Row(r"SELECT * FROM REGISTRY.REGISTRYKEY('HKLM64\Software\{key}\*')"),
    Row(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\*')"),
    Row(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM\Software\{key}\where')"),
    Row(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\')"),
    Row(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\*\Version')"),
    Row(r"SELECT Path FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\*\Version') "
        "WHERE StringValue LIKE '1.1*'"),
    Row(r"SELECT COUNT(StringValue) FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\*')"),
    # Nothing, and nothing of the kind.
    Row(r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\No Such Key').RegistryKey", NONE),
    Row(r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\No*\x').RegistryKey", NONE),
    Row(r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\\{key}').RegistryKey", NONE),
    Row(r"SELECT Name FROM Registry(KeyPath='HKXX\Software').RegistryKey", ERROR),
    Row(r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\{key}', Levels=101).RegistryKey", ERROR),
    Row(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{key}\no such value')", NONE),
    Row(r"SELECT * FROM REGISTRY.REGISTRYKEY('HKU\S-1-5-21-7-7-7-7\*')", NONE),
    Row("SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64')", ERROR),
    Row(r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKPD\*')", NONE),
    Row(r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKDD\*')", NONE),
    # What Wine put there.
    Row(rf"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{NT}\*')"),
    Row(rf"SELECT Path FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\{NT}\Time Zones\*\*')"),
    # The network cards are listed anew at each start, in memory.
    Row(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKLM64\Software\Microsoft\*\CurrentVersion\*')",
        live_only=r"\\NetworkCards$"),
    Row(rf"SELECT {VALUE} FROM REGISTRY.REGISTRYVALUE('HKCR64\CLSID\*\InprocServer32\*')"),
    Row(r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKCR64\*')"),
    # The hardware too is found anew.
    Row(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKLM64\*')", live_only=r"\\Hardware$"),
    Row(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKU\*')"),
    Row(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKCU\*')"),
    Row(rf"SELECT {VALUE} FROM REGISTRY.REGISTRYVALUE('HKCC64\Software\*\*')"),
    Row(rf"SELECT {VALUE} FROM REGISTRY.REGISTRYVALUE('HKLM64\System\CurrentControlSet\Services\*"
        r"\ImagePath')"),
    Row(rf"SELECT {VALUE} FROM Registry(KeyPath='HKU', Levels=30, Timeout=60000).RegistryValue"),
    # Wine 8 takes the machine's classes for HKEY_CLASSES_ROOT; Windows, and --image, lay the user's
    # over them.
    Row(r"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKCR64\{key}\where')",
        [r"HKEY_LOCAL_MACHINE\Software\Classes"], image=[r"HKEY_CURRENT_USER\Software\Classes"]),
    # Wine 8 sends a program of 32 bits to Classes\Wow6432Node for all classes; Windows, and --image,
    # show it the others, which both views share.
    Row(r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKCR\*')",
        image_only="(?i)^(?!(AppID|CLSID|DirectShow|Interface|Media Type|MediaFoundation|Protocols|TypeLib)$)"),
]

FILES = [
    # The source.
    files(r"SELECT {0} FROM FILES.FILE('{data}\*')".replace("{0}", FILE)),
    files(r"SELECT {0} FROM FILES.FILE('c:\kestra data\*.TXT')".replace("{0}", FILE)),
    files(r"SELECT {0} FROM FILES.FILE('{data}\README.txt')".replace("{0}", FILE)),
    files("SELECT Path FROM FILES.FILE('{data}\\gR\u00dc\u00dfE.TXT')"),
    files("SELECT Path FROM FILES.FILE('{data}\\??\u8a9e.*')"),
    files("SELECT Path FROM FILES.FILE('{data}\\? smile.txt')"),
    files(r"SELECT Path FROM FILES.FILE('{data}\a[1];b''c.txt')"),
    files(r"SELECT FileName, Size FROM FILES.FILE('{data}\same.txt')", ["same.txt\t5"]),
    files(r"SELECT FileName, Size FROM FILES.FILE('{data}\SAME.txt')", ["SAME.txt\t10"]),
    files("SELECT Size FROM FILES.FILE('{data}\\Case\\\u03a9.TXT')", ["5"]),
    files("SELECT Size FROM FILES.FILE('{data}\\case\\\u0178.txt')", ["16"]),
    files(r"SELECT FileName FROM FILES.FILE('{data}\*.*') WHERE Size = 0 OR Size > 65536"),
    files(r"SELECT FileName FROM FILES.FILE('{data}\*') WHERE Attributes & 6 > 0",
          ["all three.txt", "hidden.txt", "system.txt"]),
    files(r"SELECT FileName, Attributes FROM FILES.FILE('{data}\*') WHERE Attributes LIKE "
          "'*ReadOnly*'", ["all three.txt\tReadOnly|Hidden|System", "readonly.txt\tReadOnly"]),
    files(r"SELECT FileName, LastWriteTime FROM FILES.FILE('{data}\*') "
          "WHERE LastWriteTime < '2001-09-09 01:46:41'"),
    files(r"SELECT FileName FROM FILES.FILE('{data}\*') WHERE LastWriteTime IS NULL",
          ["after 2106.txt", "before 1970.txt"]),
    files(r"SELECT COUNT(*) FROM FILES.FILE('{data}\*')"),
    files(r"SELECT FileName, Size FROM FILES.FILE('{data}\Holes\*')"),
    files(r"SELECT {0} FROM FILES.FILE('%windows%\*')".replace("{0}", FILE)),
    files(r"SELECT FileName, Size, Attributes FROM FILES.FILE('%system%\*')"),
    files(r"SELECT {0} FROM FILES.FILE('%system%\k*')".replace("{0}", FILE)),
    files(r"SELECT FileName, FileVersion FROM FILES.FILE('%system%\m*.dll') "
          "WHERE FileVersion >= '6' OR ProductVersion < '4.0'"),
    files(r"SELECT MAX(FileVersion) FROM FILES.FILE('%system%\*.dll')"),
    # How Windows reads paths.
    files(r"SELECT FileName FROM FILES.FILE('{data}\..\kestra data\sub\.\*')", ["sub.txt"]),
    files(r"SELECT FileName FROM FILES.FILE('\Kestra Data\Sub\*')", ["sub.txt"]),
    files(r"SELECT FileName FROM FILES.FILE('C:\\\Kestra Data\\Sub\\\*')", ["sub.txt"]),
    files(r"SELECT Path, Size FROM FILES.FILE('{data}/lower.txt')"),
    files(r"SELECT Size FROM FILES.FILE('{data}.\lower.txt. .')", ["8"]),
    files(r"SELECT Size FROM FILES.FILE('{data} \lower.txt')", NONE),
    files(r"SELECT Size FROM FILES.FILE('{data}\lower.txt\')", NONE),
    files(r"SELECT Size FROM FILES.FILE('{data}\lower.txt:stream')", NONE),
    files(r"SELECT Size FROM FILES.FILE('{data}\.dotted.txt')", NONE),
    files(r"SELECT Size FROM FILES.FILE('{data}\.dotted\*')", ["21"]),
    files(r"SELECT Size FROM FILES.FILE('{data}\Sub')", NONE),
    files(r"SELECT Size FROM FILES.FILE('{data}\lower.txt\x')", NONE),
    files(r"SELECT Size FROM FILES.FILE('{data}\none.txt')", NONE),
    files(r"SELECT Size FROM FILES.FILE('C:\No Such\*')", NONE),
    files(r"SELECT Size FROM FILES.FILE('C:\No*\x')", ERROR),
    files(r"SELECT Size FROM FILES.FILE('C:/Kestra Data/*')", ERROR),
    files(r"SELECT Size FROM FILES.FILE('Y:\*')", NONE),
    files(r"SELECT Size FROM FILES.FILE('%nosuchtoken%\*')", ERROR),
    # The module.
    files(r"SELECT Path, Name, Attributes FROM Files(DirPath='{data}', Levels=1).Directory"),
    files(r"SELECT Path FROM Files(DirPath='{data}\Far', Levels=9).File"),
    files(r"SELECT Path, Size FROM Files(DirPath='{data}\S*', Levels=1, FileName='*.txt').File"),
    files(r"SELECT d.Name, f.FileName FROM Files(DirPath='{data}', Levels=3).Directory d "
          "JOIN Files.File f ON f.ATTACHEDTO = d.ITEMID WHERE d.Name <> 'Links'"),
    files(r"SELECT FileText FROM Files(FilePath='{data}\readme.txt', CharFrom=3, CharCount=30).File"),
    files(r"SELECT FileText FROM Files(FilePath='{data}\latin.txt', CharFrom=1, CharCount=99).File"),
    files(r"SELECT FileText, Size FROM Files(FilePath='{data}\empty.dat', CharFrom=1, CharCount=9)"
          ".File"),
    files(r"SELECT LEN(FileText) FROM Files(FilePath='{data}\large.bin', CharFrom=1, "
          "CharCount=90000).File"),
    files(r"SELECT LEN(FileText) FROM Files(FilePath='{data}\Holes\small.bin', CharFrom=1, "
          "CharCount=9).File"),
    Row(r"SELECT Number, Text FROM Files(FilePath='{data}\ReadMe.Txt', LineFrom=2, LineCount=9)"
        ".FileLine"),
    Row(r"SELECT Number, Text FROM Files(FilePath='{data}\UPPER.TXT', LineFrom=1, LineCount=9, "
        "LinePattern='*e*').FileLine"),
    Row(r"SELECT Number, LEN(Text) FROM Files(FilePath='{data}\long line.txt', LineFrom=1, "
        "LineCount=9).FileLine", ["1\t1024", "2\t5"]),
    files(r"SELECT Path FROM Files(DirPath='C:\', Levels=0).Directory"),
    files(r"SELECT Path FROM Files(DirPath='C:\*').Directory"),
    files(r"SELECT Path FROM Files(DirPath='C:\w?ndows\*', FileName='*.inf').File"),
    files(r"SELECT Path FROM Files(DirPath='C:\No Such').File", NONE),
    files(r"SELECT Path FROM Files(FilePath='{data}\*.txt', LineFrom=1, LineCount=1).File", ERROR),
    files(r"SELECT COUNT(*) FROM Files(DirPath='%windows%', Levels=9, Timeout=60000).File"),
    # The folders that tokens stand for.
    files(r"SELECT Path FROM Files(DirPath='%programfiles%', Levels=5).Directory"),
    files(r"SELECT Path FROM Files(DirPath='%programfiles64%', Levels=1).Directory"),
    # A prefix for programs of 64 bits alone does not say where the others would be.
    files(r"SELECT Path FROM Files(DirPath='%programfiles32%').Directory", ERROR),
    files(r"SELECT Path FROM Files(DirPath='%programs%', Levels=3).Directory"),
    files(r"SELECT Path FROM Files(DirPath='%commonappdata%', Levels=3).Directory"),
    files(r"SELECT Path FROM Files(DirPath='%system%\drivers', Levels=3).File"),
    files(r"SELECT Path FROM FILES.FILE('%inf%\*')"),
    Row(r"SELECT Path FROM IniFile(Path='%temp%\x.ini').IniFile"),
    Row(r"SELECT Path FROM IniFile(Path='%startup%\x.ini').IniFile"),
    Row(r"SELECT Path FROM IniFile(Path='%appdata%\x.ini').IniFile"),
    Row(r"SELECT Path FROM IniFile(Path='%systemdrive%\x.ini').IniFile", [r"C:\x.ini"]),

    # A folder that a link inside leads to is the folder.
    files(r"SELECT Path FROM FILES.FILE('{data}\Links\folder\*')"),
    # Wine tells nobody that a file is a link, and none that leads nowhere; on Windows, and by
    # --image, a link is listed as what it is, with its own size.
    files(r"SELECT FileName, Size FROM FILES.FILE('{data}\Links\*.txt')", ["file.txt\t8"],
          image=["file.txt\t12", "nowhere.txt\t4", "round.txt\t9"]),
    # --image does not look at what is outside, not even whether it is a folder.
    files(r"SELECT Name FROM Files(DirPath='{data}\Links', Levels=1).Directory WHERE Name <> 'Links'",
          ["folder", "out"], image=["folder"]),
    files(r"SELECT FileName FROM FILES.FILE('{data}\Links\out\etc\passwd')", ["passwd"], image=NONE),
    # Only a running system has other drives, and a current directory on each.
    files(r"SELECT FileName FROM FILES.FILE('Z:\etc\passwd')", ["passwd"], image=NONE),
    files(r"SELECT FileName FROM FILES.FILE('C:Kestra Data\lower.txt')", ["lower.txt"], image=NONE),
    # Only a running system has devices, which nobody may read as files; on a volume there is no such
    # file.
    files(r"SELECT Path FROM Files(FilePath='{data}\NUL').File", ERROR, image=NONE),
    # Kestra's own comparison takes both small sigmas for the great one, the file system of Wine only
    # the usual one; a volume does not say what its own takes for the same.
    files("SELECT Size FROM FILES.FILE('{data}\\Case\\\u03a3.txt')", NONE, image=["26"]),
]

INI = [
    Row(r"SELECT s.Name, k.Name, k.StringValue, k.DWORDValue FROM IniFile(Path='{data}\crlf.ini')"
        ".IniSection s JOIN IniFile.IniKey k ON k.ATTACHEDTO = s.ITEMID"),
    Row(r"SELECT * FROM INIFILES.IniKey('{data}\crlf.ini')"),
    Row(r"SELECT * FROM INIFILES.IniSection('{data}\crlf.ini')"),
    Row(r"SELECT * FROM INIFILES.IniKey('c:\KESTRA data\LF.INI')"),
    Row(r"SELECT * FROM IniFile(Path='{data}\utf8.ini').IniKey"),
    Row(r"SELECT * FROM IniFile(Path='{data}\marked.ini').IniKey"),
    Row(r"SELECT * FROM IniFile(Path='{data}\marked.ini').IniSection"),
    Row(r"SELECT * FROM IniFile(Path='{data}\latin.ini').IniKey"),
    Row(r"SELECT * FROM IniFile(Path='{data}\crlf.ini', API=1).IniKey"),
    Row(r"SELECT * FROM IniFile(Path='{data}\lf.ini', API=1).IniSection"),
    Row(r"SELECT * FROM IniFile(Path='{data}\latin.ini', API=1).IniKey"),
    Row(r"SELECT Name, StringValue FROM IniFile(Path='{data}\tree.cfg', Format='Cfg').IniKey"),
    Row(r"SELECT Name FROM IniFile(Path='{data}\tree.cfg', Format='Cfg').IniSection"),
    Row(r"SELECT Name, StringValue FROM IniFile(Path='{data}\tree.cfg', Format='Cfg', "
        r"Section='outer\inner').IniKey"),
    Row(r"SELECT Name FROM IniFile(Path='{data}\crlf.ini', Section='FIRST').IniKey"),
    Row(r"SELECT Name FROM INIFILES.IniKey('{data}\crlf.ini') WHERE DWORDValue > 1"),
    Row(r"SELECT Name FROM IniFile(Path='\\?\{data}\lf.ini').IniSection"),
    Row(r"SELECT COUNT(*) FROM INIFILES.IniKey('{data}\empty.ini')", ["0"]),
    Row(r"SELECT Name FROM INIFILES.IniKey('{data}\none.ini')", NONE),
    Row(r"SELECT Name FROM IniFile(Path='{data}\wide.ini').IniKey", ERROR),
    Row(r"SELECT Name FROM IniFile(Path='{data}\Sub').IniKey", ERROR),
    Row(r"SELECT Name FROM IniFile(Path='Sub\x.ini').IniKey", ERROR),
    Row(r"SELECT Path FROM IniFile(Path='{data}\lf.ini').IniFile"),
    # A bare name is one in the Windows folder.
    Row(r"SELECT * FROM IniFile(Path='win.ini').IniKey"),
    Row(r"SELECT * FROM INIFILES.IniKey('%windows%\system.ini')"),
    # Across the modules.
    files(r"SELECT f.Path, v.Path FROM REGISTRY.REGISTRYVALUE('HKLM64\System\CurrentControlSet"
          r"\Services\*\ImagePath') v JOIN FILES.FILE('%system%\drivers\*') f "
          r"ON RIGHT(v.StringValue, LEN(f.FileName)) = f.FileName"),
]

QUERIES = REGISTRY + FILES + INI
