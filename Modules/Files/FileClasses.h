// The classes of directories, files and lines of text files.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kFilesModule;
extern const ClassDecl kDirectoryClass;
extern const ClassDecl kFileClass;
extern const ClassDecl kFileLineClass;

}  // namespace kestra
