#include "VLib/src/errors/Exception.h"

#include "platform/os/MessageText.h"

namespace kestra {

CVSystemException::CVSystemException(kestra::SystemError code)
    : CVException(GetSystemErrorText(code)), ErrorCode(code) {}

std::string GetSystemErrorText(SystemError code) {
  return os::SystemErrorText(code).value_or(std::string());
}

}  // namespace kestra
