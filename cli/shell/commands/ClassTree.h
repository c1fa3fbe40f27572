// The class tree of a session, for what the shell tells of it.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "cli/Handles.h"

namespace kestra::cli {

// A name that there is not; the sentence names the nearest ones.
class CUnknownName : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string NameOf(const CClassHandle& diagClass);
std::string DescriptionOf(const CClassHandle& diagClass);
std::vector<CClassHandle> ChildrenOf(const CClassHandle& diagClass);

std::vector<CClassHandle> ModulesOf(kestra_session* session);
// By its name in any case, or that of a built-in source ("INIFILES"). Throws CUnknownName.
CClassHandle FindModule(kestra_session* session, const std::string& name);
// Below a module, at any depth; the module itself is one too. Throws CUnknownName.
CClassHandle FindClass(const CClassHandle& module, const std::string& name);

// "" for one that has something to show, else why it has not.
std::string StateOf(kestra_session* session, const std::string& module);

}  // namespace kestra::cli
