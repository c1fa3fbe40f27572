// The descriptions of our interfaces, out of the type library in this library's own resources, so
// that an object can be driven by scripts whether or not anything is registered.
#pragma once

#include <string>

#include "front/com/base/Com.h"

namespace kestra::com {

// Full path of this library's file.
std::wstring ModulePath();

// The type library itself.
HRESULT LoadOwnTypeLibrary(CComPtr<ITypeLib>& library);

// Of an interface or a class. Kept for the next question as long as any object is alive. Any
// thread.
HRESULT TypeInfoOf(REFGUID id, CComPtr<ITypeInfo>& info) noexcept;

// Lets go of what is kept.
void ForgetTypeInfos() noexcept;

}  // namespace kestra::com
