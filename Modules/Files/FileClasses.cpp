#include "Modules/Files/FileClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr const char* kAttributeNames = "ReadOnly|Hidden|System|Compressed";
constexpr const char* kForActiveOnly = "For INSERT only";

constexpr ParamDecl kFileLineParams[] = {
    {.name = "Number", .type = Dword, .description = "Line number, counted from 1"},
    {.name = "Text", .type = String, .description = "The line, without its end"},
};

constexpr ParamDecl kFileParams[] = {
    {.name = "Path", .type = String, .canBeChanged = true, .description = "Whole path"},
    {.name = "ShortPathName",
     .type = String,
     .description = "Path in short (8.3) names, where the file system has them"},
    {.name = "FileName",
     .type = String,
     .canBeChanged = true,
     .description = "Last part of the path"},
    {.name = "FileVersion", .type = Version, .description = "Version out of the version resource"},
    {.name = "ProductVersion",
     .type = Version,
     .description = "Product's version out of the version resource"},
    {.name = "FileDescription",
     .type = String,
     .description = "What the version resource says the file is"},
    {.name = "Copyright", .type = String, .description = "Copyright out of the version resource"},
    {.name = "Comments", .type = String, .description = "Comments out of the version resource"},
    {.name = "CompanyName", .type = String, .description = "Maker out of the version resource"},
    {.name = "InternalName",
     .type = String,
     .description = "Internal name out of the version resource"},
    {.name = "OriginalFilename",
     .type = String,
     .description = "Original file name out of the version resource"},
    {.name = "ProductName", .type = String, .description = "Product out of the version resource"},
    {.name = "Size",
     .type = Dword,
     .description = "Bytes; absent for a file of 4 GiB or more, which 32 bits do not hold"},
    {.name = "CreationTime", .type = Datime, .description = "When the file was made, if known"},
    {.name = "LastAccessTime", .type = Datime, .description = "When it was last read"},
    {.name = "LastWriteTime", .type = Datime, .description = "When it was last written"},
    {.name = "Attributes",
     .type = Bitmask,
     .text = kAttributeNames,
     .canBeChanged = true,
     .description = "Attributes of the file"},
    {.name = "FileText",
     .type = String,
     .description = "A stretch of the file's text; through the module Files only"},
    {.name = "Source", .type = String, .description = kForActiveOnly},
    {.name = "ResName",
     .type = String,
     .description = "For INSERT, with ResType: the resource of the program Source that becomes the "
                    "file, a name or # and a number"},
    {.name = "ResType",
     .type = String,
     .description = "The type of that resource, a name or # and a number (#16: version)"},
};

constexpr ParamDecl kDirectoryParams[] = {
    {.name = "Path", .type = String, .canBeChanged = true, .description = "Whole path"},
    {.name = "Name", .type = String, .canBeChanged = true, .description = "Last part of the path"},
    {.name = "CreationTime",
     .type = Datime,
     .description = "When the directory was made, if known"},
    {.name = "Attributes",
     .type = Bitmask,
     .text = kAttributeNames,
     .canBeChanged = true,
     .description = "Attributes of the directory"},
    {.name = "Source", .type = String, .description = kForActiveOnly},
};

constexpr const char* kFileExamples[] = {
    "SELECT FileName, Size FROM FILES.FILE('/etc/*.conf') WHERE Size > 1000",
    "SELECT Path, LastWriteTime FROM FILES.FILE('/etc/host*')",
    "SELECT Path, Size FROM Files(DirPath='/etc', Levels=2).File WHERE FileName LIKE '*.conf'",
    "SELECT FileText FROM Files(FilePath='/etc/passwd', CharFrom=1, CharCount=200).File",
};

constexpr const char* kDirectoryExamples[] = {
    "SELECT Path, CreationTime FROM Files(DirPath='/etc', Levels=1).Directory",
};

constexpr const char* kFileLineExamples[] = {
    "SELECT Number, Text FROM Files(FilePath='/etc/passwd', LineFrom=1, LineCount=5).FileLine",
};

constexpr const ClassDecl* kFileChildren[] = {&kFileLineClass};
constexpr const ClassDecl* kDirectoryChildren[] = {&kFileClass};
constexpr const ClassDecl* kFilesChildren[] = {&kDirectoryClass};

constexpr ArgDecl kFilesArgs[] = {
    {.name = "DirPath", .type = String, .description = "A directory; wildcards are allowed in it"},
    {.name = "FilePath",
     .type = String,
     .description = "One file, or a pattern in the last part of the path"},
    {.name = "FileName",
     .type = String,
     .defaultText = "*",
     .description = "Pattern for the files that are listed in each directory"},
    {.name = "Timeout",
     .type = Dword,
     .defaultNumber = 5000,
     .description = "Milliseconds for the whole fill, at most 3600000"},
    {.name = "Levels",
     .type = Dword,
     .description = "How many directory levels below the start, at most 100"},
    {.name = "CharFrom",
     .type = Dword,
     .description = "First character of FileText, counted from 1; 0 for none"},
    {.name = "CharCount", .type = Dword, .description = "How many characters, at most 1048576"},
    {.name = "LineFrom",
     .type = Dword,
     .description = "First line of the FileLine items, counted from 1; 0 for none"},
    {.name = "LineCount", .type = Dword, .description = "How many lines, at most 1048576"},
    {.name = "LineSize",
     .type = Dword,
     .defaultNumber = 4294967295,
     .description = "Characters kept of a line, at most 1024; 4294967295 for the limit itself"},
    {.name = "LinePattern",
     .type = String,
     .defaultText = "*",
     .description = "Only lines that match become items"},
};

}  // namespace

constinit const ClassDecl kFileLineClass = {.name = "FileLine",
                                            .params = kFileLineParams,
                                            .description = "A line of a text file.",
                                            .examples = kFileLineExamples};

constinit const ClassDecl kFileClass = {
    .name = "File",
    .params = kFileParams,
    .children = kFileChildren,
    .canBeAddedAndDeleted = true,
    .description = "A file. The rows of the source FILES.FILE are of this class too.",
    .examples = kFileExamples};

constinit const ClassDecl kDirectoryClass = {.name = "Directory",
                                             .params = kDirectoryParams,
                                             .children = kDirectoryChildren,
                                             .canBeAddedAndDeleted = true,
                                             .description = "A directory.",
                                             .examples = kDirectoryExamples};

constinit const ClassDecl kFilesModule = {
    .name = "Files",
    .children = kFilesChildren,
    .args = kFilesArgs,
    .description = "Directories, files and lines of text files."};

}  // namespace kestra
