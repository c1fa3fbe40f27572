#include "Modules/Processes/ProcessesModule.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kProcessParams[] = {
    {.name = "PID",
     .type = Dword,
     .description = "Process number; absent for a 16-bit task, which has a thread instead"},
    {.name = "ParentProcessID",
     .type = Dword,
     .description = "Number of the process that started this one"},
    {.name = "ThreadID", .type = Dword, .description = "Thread of a 16-bit task; Windows only"},
    {.name = "ImageName", .type = String, .description = "File name of the program, no folder"},
    {.name = "FilePath", .type = String, .description = "Full path of the program"},
    {.name = "Description",
     .type = String,
     .description = "What the program's version resource says it is; Windows only"},
    {.name = "FileVersion",
     .type = Version,
     .description = "Version of the program's file; Windows only"},
    {.name = "ProductName",
     .type = String,
     .description = "Product that the program belongs to; Windows only"},
    {.name = "ProductVersion",
     .type = Version,
     .description = "Version of that product; Windows only"},
    {.name = "CompanyName", .type = String, .description = "Maker of the program; Windows only"},
    {.name = "MemoryUsage",
     .type = Dword,
     .text = "KB",
     .description = "Working set (resident memory); absent for a process that has none"},
    {.name = "HandleCount",
     .type = Dword,
     .description = "Open handles (descriptors on Linux), where they may be counted"},
    {.name = "User",
     .type = String,
     .description = "Account that the process runs under; with ShowUserAndComLine only"},
    {.name = "CommandLine",
     .type = String,
     .description = "Command line that it was started with; with ShowUserAndComLine only"},
    {.name = "ProcessArchitecture",
     .type = Enum,
     .text = "16 bits|32 bits|64 bits",
     .description = "Width of the program"},
    {.name = "WindowTitle",
     .type = String,
     .description = "Title that was given to its first window; Windows only"},
};

constexpr const char* kProcessExamples[] = {
    "SELECT PID, ImageName FROM Processes.Process WHERE MemoryUsage > 1000",
    "SELECT PID, ImageName, MemoryUsage, User, CommandLine "
    "FROM Processes(ShowUserAndComLine=1).Process WHERE MemoryUsage > 1000",
    "SELECT c.ImageName, p.ImageName FROM Processes.Process c "
    "JOIN Processes.Process p ON c.ParentProcessID = p.PID",
};

constexpr const ClassDecl* kProcessesChildren[] = {&kProcessClass};

constexpr ArgDecl kProcessesArgs[] = {
    {.name = "ShowUserAndComLine",
     .type = Dword,
     .description = "Above 0: User and CommandLine are filled, for which every process is opened"},
};

}  // namespace

constinit const ClassDecl kProcessClass = {
    .name = "Process",
    .params = kProcessParams,
    .canBeAddedAndDeleted = true,
    .description = "A running process. DELETE ends it; there is no INSERT.",
    .examples = kProcessExamples};

constinit const ClassDecl kProcessesModule = {.name = "Processes",
                                              .children = kProcessesChildren,
                                              .args = kProcessesArgs,
                                              .description = "What runs on the machine."};

}  // namespace kestra
