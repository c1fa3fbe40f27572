"""The queries of same_rows_test.py: over what prefix_content.py puts into a prefix, and over what
Wine puts there itself. What a row leaves out of the comparison, it says why.
"""
import re

ROWS, NONE, ERROR = "rows", "no rows", "an Error"


class Row:
    """A query, and how the two results are compared.

    expected   what both must be, so that no fault is on both sides: ROWS, NONE, ERROR, or the lines
    unordered  the order is that of a directory, which is Wine's own in one and the disk's in the
               other
    without    lines that match are left out on both sides
    """

    def __init__(self, query, expected=ROWS, unordered=False, without=None):
        self.query, self.expected = query, expected
        self.unordered, self.without = unordered, without

    def comparable(self, lines):
        kept = [line for line in lines if not (self.without and re.search(self.without, line))]
        return sorted(kept) if self.unordered else kept

    def is_plausible(self, lines):
        is_error = lines[:1] != [] and lines[0].startswith("Error: ")
        if self.expected == ROWS:
            return lines != [] and not is_error
        if self.expected == NONE:
            return lines == []
        return is_error if self.expected == ERROR else lines == self.expected


def files(query, expected=ROWS, **more):
    return Row(query.replace("DATA", r"C:\Kestra Data"), expected, unordered=True, **more)


def registry(query, expected=ROWS, **more):
    return Row(query.replace("HERE", "Kestra Rows"), expected, **more)


def ini(query, expected=ROWS, **more):
    return Row(query.replace("DATA", r"C:\Kestra Data"), expected, **more)


# What a prefix has in memory alone, and in no file.
VOLATILE = r"(?i)\\(hardware|volatile environment|perflib\\009|prefetcher)(\\|\t|$)"

# ShortPathName is left out everywhere: Wine makes such names up out of the long ones, and no disk
# has them. So is CreationTime: Wine 8 gives the time of the last write for it, the volume that of
# the disk's own record. LastAccessTime changes with each look, by whichever side.
FILE = ("Path, FileName, FileVersion, ProductVersion, FileDescription, Copyright, Comments, "
        "CompanyName, InternalName, OriginalFilename, ProductName, Size, LastWriteTime, Attributes, "
        "FileText")

QUERIES = [
    # Registry: the module.
    registry(r"SELECT * FROM Registry(KeyPath='HKLM64\Software\HERE', Levels=9).RegistryKey"),
    registry(r"SELECT * FROM Registry(KeyPath='HKLM64\Software\HERE', Levels=9).RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKLM\Software\HERE', Levels=9).RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKLM\Software\HERE', Levels=9).RegistryKey"),
    registry(r"SELECT * FROM Registry(KeyPath='HKCU\Software\HERE').RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKCU64\Software\HERE').RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKU64\.DEFAULT\Software\HERE').RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKU\*\Software\HERE').RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKEY_CLASSES_ROOT64\HERE', Levels=1).RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKCR64\CLSID\HERE').RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKCR\CLSID\HERE').RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKLM\Software\Classes\CLSID\HERE').RegistryValue"),
    registry(r"SELECT * FROM Registry(KeyPath='HKLM64\System\CurrentControlSet\Control\HERE')"
             ".RegistryValue"),
    registry(r"SELECT Path FROM Registry(KeyPath='HKLM64\Software\HERE\s*').RegistryKey"),
    registry(r"SELECT Path, StringValue FROM Registry(KeyPath='HKLM64\Software\HERE\*\D??p\*', "
             "ValueName='b*').RegistryValue", NONE),
    registry(r"SELECT Path, DWORDValue FROM Registry(ValuePath='hklm64\SOFTWARE\here\SUB ONE\deep\*"
             r"\BOT*').RegistryValue"),
    registry(r"SELECT Name, StringValue FROM Registry(ValuePath='HKLM64\Software\HERE\multi*', "
             "MultiSZSeparator='+').RegistryValue"),
    registry(r"SELECT Name FROM Registry(ValuePath='HKLM64\Software\HERE\gr?" + "\u00df" + r"E')"
             ".RegistryValue"),
    registry(r"SELECT k.Path, v.Name, v.StringValue FROM Registry(KeyPath='HKLM64\Software\HERE\*')"
             ".RegistryKey k JOIN Registry.RegistryValue v ON v.ATTACHEDTO = k.ITEMID"),
    registry(r"SELECT Path FROM Registry(KeyPath='HKLM64\Software\HERE').RegistryKey "
             "WHERE LastWriteTime > '2020-01-01' AND LastWriteTime <= GETDATE()"),
    registry(r"SELECT Name, Type FROM Registry(KeyPath='HKLM64\Software\HERE').RegistryValue "
             "WHERE Type IN ('Binary', 'Link', 'None') OR DWORDValue = 42"),
    registry(r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\No Such Key').RegistryKey", NONE),
    registry(r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\No*\x').RegistryKey", NONE),
    registry(r"SELECT Name FROM Registry(KeyPath='HKXX\Software').RegistryKey", ERROR),
    registry(r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\HERE', Levels=101).RegistryKey",
             ERROR),
    # Registry: the sources.
    registry(r"SELECT * FROM REGISTRY.REGISTRYKEY('HKLM64\Software\HERE\*')"),
    registry(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\HERE\*')"),
    registry(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM\Software\HERE\where')"),
    registry(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\HERE\*\Version')"),
    registry(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKCR64\HERE\where')"),
    registry(r"SELECT Path FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\HERE\*\Version') "
             "WHERE StringValue LIKE '1.1*'"),
    registry(r"SELECT a.Name, b.Name FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\HERE\*') a JOIN "
             r"REGISTRY.REGISTRYVALUE('HKLM\Software\HERE\*') b ON a.StringValue = b.StringValue "
             "WHERE a.Name <> b.Name"),
    registry(r"SELECT COUNT(StringValue) FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\HERE\*')"),
    registry(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\HERE\no such value')", NONE),
    registry(r"SELECT * FROM REGISTRY.REGISTRYKEY('HKLM64\Software\No Such Key')", NONE),
    registry(r"SELECT * FROM REGISTRY.REGISTRYKEY('HKXX\Software')", ERROR),
    registry(r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKPD\*')", NONE),
    # What Wine put there.
    registry(r"SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\Microsoft\Windows NT"
             r"\CurrentVersion\*')"),
    registry(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKLM64\Software\Microsoft\*\CurrentVersion\*')",
             without=VOLATILE),
    registry(r"SELECT Path, StringValue FROM REGISTRY.REGISTRYVALUE('HKCR\CLSID\*\InprocServer32\*')"),
    registry(r"SELECT Path, StringValue FROM REGISTRY.REGISTRYVALUE('HKCR64\CLSID\*\InprocServer32\*')"),
    registry(r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKCR\*')"),
    registry(r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKCR64\*')"),
    registry(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKLM64\*')", without=VOLATILE),
    registry(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKU\*')"),
    registry(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKCC\*\*')"),
    registry(r"SELECT Path FROM REGISTRY.REGISTRYKEY('HKCU\*')", without=VOLATILE),
    registry(r"SELECT Path, Type, StringValue FROM REGISTRY.REGISTRYVALUE('HKLM64\System"
             r"\CurrentControlSet\Services\*\ImagePath')"),
    registry(r"SELECT COUNT(*) FROM Registry(KeyPath='HKLM64\Software\Classes', Levels=3, "
             "Timeout=60000).RegistryValue"),

    # Files: the source.
    files(rf"SELECT {FILE} FROM FILES.FILE('DATA\*')"),
    files(rf"SELECT {FILE} FROM FILES.FILE('c:\kestra data\*.TXT')"),
    files(rf"SELECT {FILE} FROM FILES.FILE('DATA\README.txt')"),
    files("SELECT Path FROM FILES.FILE('DATA\\gR\u00dc\u00dfE.TXT')"),
    files("SELECT Path FROM FILES.FILE('DATA\\??\u8a9e.*')"),
    files("SELECT Path FROM FILES.FILE('DATA\\? smile.txt')"),
    files(r"SELECT Path FROM FILES.FILE('DATA\a[1];b''c.txt')"),
    files(r"SELECT FileName FROM FILES.FILE('DATA\*.*') WHERE Size = 0 OR Size > 65536"),
    files(r"SELECT FileName FROM FILES.FILE('DATA\*') WHERE Attributes & 6 > 0"),
    files(r"SELECT FileName, Attributes FROM FILES.FILE('DATA\*') WHERE Attributes LIKE '*ReadOnly*'"),
    files(r"SELECT FileName, LastWriteTime FROM FILES.FILE('DATA\*') "
          "WHERE LastWriteTime < '2001-09-09 01:46:41'"),
    files(r"SELECT FileName FROM FILES.FILE('DATA\*') WHERE LastWriteTime IS NULL"),
    files(r"SELECT FileName FROM FILES.FILE('DATA\..\kestra data\sub\.\*')"),
    files(r"SELECT FileName FROM FILES.FILE('\Kestra Data\Sub\*')"),
    files(r"SELECT FileName FROM FILES.FILE('C:/Kestra Data/*')"),
    files(r"SELECT FileName FROM FILES.FILE('DATA\.dotted.txt')", NONE),
    files(r"SELECT FileName FROM FILES.FILE('DATA\Sub')", NONE),
    files(r"SELECT FileName FROM FILES.FILE('DATA\lower.txt\x')", NONE),
    files(r"SELECT FileName FROM FILES.FILE('DATA\none.txt')", NONE),
    files(r"SELECT FileName FROM FILES.FILE('C:\No Such\*')", NONE),
    files(r"SELECT FileName FROM FILES.FILE('C:\No*\x')", ERROR),
    files(r"SELECT FileName FROM FILES.FILE('Y:\*')", NONE),
    files(r"SELECT FileName FROM FILES.FILE('%nosuchtoken%\*')", ERROR),
    files(r"SELECT COUNT(*) FROM FILES.FILE('DATA\*')"),
    files(rf"SELECT {FILE} FROM FILES.FILE('%windows%\*')"),
    files(rf"SELECT {FILE} FROM FILES.FILE('%system%\k*')"),
    files(r"SELECT FileName, FileVersion FROM FILES.FILE('%system%\m*.dll') "
          "WHERE FileVersion >= '6' OR ProductVersion < '4.0'"),
    files(r"SELECT Path FROM FILES.FILE('%inf%\*')"),
    files(r"SELECT Path FROM FILES.FILE('%commonappdata%\*')", NONE),
    # Files: the module.
    files(r"SELECT Path, Name, Attributes FROM Files(DirPath='DATA', Levels=9).Directory"),
    files(r"SELECT Path FROM Files(DirPath='DATA', Levels=9).File"),
    files(r"SELECT Path, Size FROM Files(DirPath='DATA\S*', Levels=1, FileName='*.txt').File"),
    files(r"SELECT d.Name, f.FileName FROM Files(DirPath='DATA', Levels=2).Directory d "
          "JOIN Files.File f ON f.ATTACHEDTO = d.ITEMID"),
    files(r"SELECT FileText FROM Files(FilePath='DATA\readme.txt', CharFrom=3, CharCount=30).File"),
    files(r"SELECT FileText FROM Files(FilePath='DATA\latin.txt', CharFrom=1, CharCount=99).File"),
    files(r"SELECT FileText, Size FROM Files(FilePath='DATA\empty.dat', CharFrom=1, CharCount=9).File"),
    files(r"SELECT LEN(FileText) FROM Files(FilePath='DATA\large.bin', CharFrom=1, CharCount=90000)"
          ".File"),
    Row(r"SELECT Number, Text FROM Files(FilePath='C:\Kestra Data\ReadMe.Txt', LineFrom=2, "
        "LineCount=9).FileLine"),
    Row(r"SELECT Number, Text FROM Files(FilePath='C:\Kestra Data\UPPER.TXT', LineFrom=1, "
        "LineCount=9, LinePattern='*e*').FileLine"),
    Row(r"SELECT Number, LEN(Text) FROM Files(FilePath='C:\Kestra Data\long line.txt', LineFrom=1, "
        "LineCount=9).FileLine"),
    files(r"SELECT Path FROM Files(DirPath='%system%\drivers', Levels=3).File"),
    files(r"SELECT Path FROM Files(DirPath='C:\', Levels=0).Directory"),
    files(r"SELECT Path FROM Files(DirPath='%programfiles%', Levels=5).Directory"),
    files(r"SELECT Path FROM Files(DirPath='%programfiles32%', Levels=5).Directory"),
    files(r"SELECT Path FROM Files(DirPath='%programfiles64%', Levels=1).Directory"),
    files(r"SELECT Path FROM Files(DirPath='C:\No Such').File", NONE),
    files(r"SELECT Path FROM Files(FilePath='C:\Kestra Data\*.txt', LineFrom=1, LineCount=1).File",
          ERROR),
    files(r"SELECT COUNT(*) FROM Files(DirPath='%windows%', Levels=9, Timeout=60000).File"),
    files(r"SELECT MAX(FileVersion) FROM FILES.FILE('%system%\*.dll')"),

    # IniFile: the module and the source.
    ini(r"SELECT s.Name, k.Name, k.StringValue, k.DWORDValue FROM IniFile(Path='DATA\crlf.ini')"
        ".IniSection s JOIN IniFile.IniKey k ON k.ATTACHEDTO = s.ITEMID"),
    ini(r"SELECT * FROM INIFILES.IniKey('DATA\crlf.ini')"),
    ini(r"SELECT * FROM INIFILES.IniSection('DATA\crlf.ini')"),
    ini(r"SELECT * FROM INIFILES.IniKey('data\LF.INI')".replace("data", r"c:\KESTRA data")),
    ini(r"SELECT * FROM IniFile(Path='DATA\utf8.ini').IniKey"),
    ini(r"SELECT * FROM IniFile(Path='DATA\marked.ini').IniKey"),
    ini(r"SELECT * FROM IniFile(Path='DATA\marked.ini').IniSection"),
    ini(r"SELECT * FROM IniFile(Path='DATA\latin.ini').IniKey"),
    ini(r"SELECT * FROM IniFile(Path='DATA\wide.ini').IniKey"),
    ini(r"SELECT * FROM IniFile(Path='DATA\crlf.ini', API=1).IniKey"),
    ini(r"SELECT * FROM IniFile(Path='DATA\lf.ini', API=1).IniSection"),
    ini(r"SELECT * FROM IniFile(Path='DATA\latin.ini', API=1).IniKey"),
    ini(r"SELECT Name, StringValue FROM IniFile(Path='DATA\tree.cfg', Format='Cfg').IniKey"),
    ini(r"SELECT Name FROM IniFile(Path='DATA\tree.cfg', Format='Cfg').IniSection"),
    ini(r"SELECT Name, StringValue FROM IniFile(Path='DATA\tree.cfg', Format='Cfg', "
        r"Section='outer\inner').IniKey"),
    ini(r"SELECT Name FROM IniFile(Path='DATA\crlf.ini', Section='FIRST').IniKey"),
    ini(r"SELECT Name FROM INIFILES.IniKey('DATA\crlf.ini') WHERE DWORDValue > 1"),
    ini(r"SELECT COUNT(*) FROM INIFILES.IniKey('DATA\empty.ini')", ["0"]),
    ini(r"SELECT Name FROM INIFILES.IniKey('DATA\none.ini')", NONE),
    ini(r"SELECT Name FROM IniFile(Path='DATA\Sub').IniKey", NONE),
    ini(r"SELECT Path FROM IniFile(Path='DATA\lf.ini').IniFile"),
    # A bare name is one in the Windows folder.
    ini(r"SELECT * FROM IniFile(Path='win.ini').IniKey"),
    ini(r"SELECT * FROM INIFILES.IniKey('%windows%\system.ini')"),

    # Across the three.
    Row(r"SELECT f.Path, v.Path FROM REGISTRY.REGISTRYVALUE('HKLM64\System\CurrentControlSet\Services"
        r"\*\ImagePath') v JOIN FILES.FILE('%system%\drivers\*') f "
        r"ON RIGHT(v.StringValue, LEN(f.FileName)) = f.FileName", unordered=True),
]
