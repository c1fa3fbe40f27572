// The classes of a data file of sections and keys. The module is itself the file.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kIniFileModule;
extern const ClassDecl kIniSectionClass;
extern const ClassDecl kIniKeyClass;

}  // namespace kestra
