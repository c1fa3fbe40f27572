// Classes that are described by text instead of a constant table: what a plug-in tells about its
// modules.
//
//   [Weather]
//    [_Params]
//     [Station]
//      Type = String
//     []
//    []
//    [_Args]
//     [Limit]
//      Type = Dword
//      Default = 0
//     []
//    []
//    [Reading]            any other section: a child class, described in the same way
//    ...
//    []
//   []
//
// include/kestra/plugin.h tells the whole form, for those who write one.
#pragma once

#include <string_view>

#include "VLib/src/data/CfgNode.h"
#include "model/classes/Class.h"

namespace kestra {

// The class that node describes, with its children; node's name is the class's. Null when anything
// in it does not fit: an unknown type word, an argument without default, an option that is missing,
// too deep a nesting.
Ref<DiagClass> ClassFromDescription(const CfgNode& node);

// The section of a plug-in's text that tells of one module: the text is that section, with its head
// line or without it.
const CfgNode& ModuleSection(CfgNode& text, std::string_view moduleName);

}  // namespace kestra
