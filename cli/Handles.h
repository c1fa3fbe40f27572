// The handles of the C interface, owned. A failing call of the interface becomes a CInterfaceError
// here, so that what follows need not look at each status.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "include/kestra/kestra.h"

namespace kestra::cli {

template <auto Release>
struct CReleaser {
  template <class T>
  void operator()(T* handle) const {
    Release(handle);
  }
};

using CSessionHandle = std::unique_ptr<kestra_session, CReleaser<kestra_session_destroy>>;
using CValueHandle = std::unique_ptr<kestra_value, CReleaser<kestra_value_release>>;
using CValuesHandle = std::unique_ptr<kestra_values, CReleaser<kestra_values_release>>;
using CItemHandle = std::unique_ptr<kestra_item, CReleaser<kestra_item_release>>;
using CParamHandle = std::unique_ptr<kestra_param, CReleaser<kestra_param_release>>;
using CParamsHandle = std::unique_ptr<kestra_params, CReleaser<kestra_params_release>>;
using CClassHandle = std::unique_ptr<kestra_class, CReleaser<kestra_class_release>>;
using CDiagnosisHandle = std::unique_ptr<kestra_diagnosis, CReleaser<kestra_diagnosis_release>>;
using CCompletionsHandle =
    std::unique_ptr<kestra_completions, CReleaser<kestra_completions_release>>;
using CColumnsHandle = std::unique_ptr<kestra_columns, CReleaser<kestra_columns_release>>;

class CInterfaceError : public std::runtime_error {
 public:
  explicit CInterfaceError(kestra_status status)
      : std::runtime_error(status == KESTRA_E_OUTOFMEMORY ? "out of memory"
                                                          : "the query could not be run") {}
};

inline void Check(kestra_status status) {
  if (status != KESTRA_OK) throw CInterfaceError(status);
}

// Calls get(arguments..., &answer) and hands the answer out.
template <class T, class Get, class... Args>
T Ask(Get get, Args... arguments) {
  T answer{};
  Check(get(arguments..., &answer));
  return answer;
}

template <class Get, class Handle>
bool Is(Get get, const Handle* handle) {
  return Ask<int32_t>(get, handle) != 0;
}

// The same for a handle; null when the interface says that there is none.
template <class Handle, class Get, class... Args>
Handle Take(Get get, Args... arguments) {
  typename Handle::pointer pointer = nullptr;
  const kestra_status status = get(arguments..., &pointer);
  if (status == KESTRA_E_NOTFOUND || status == KESTRA_E_POINTER) return nullptr;
  Check(status);
  return Handle(pointer);
}

inline std::string_view TextOf(kestra_value* value) {
  const char* text = nullptr;
  size_t length = 0;
  Check(kestra_value_as_string(value, &text, &length));
  return {text, length};
}

}  // namespace kestra::cli
