// The error numbers that everything at and above the seam speaks: those of the Win32 API, on every
// system. Source: the public "System Error Codes" pages of the Win32 documentation.
#pragma once

#include <cstdint>

namespace kestra {

using SystemError = uint32_t;

inline constexpr SystemError kErrorSuccess = 0;
inline constexpr SystemError kErrorInvalidFunction = 1;
inline constexpr SystemError kErrorFileNotFound = 2;
inline constexpr SystemError kErrorPathNotFound = 3;
inline constexpr SystemError kErrorTooManyOpenFiles = 4;
inline constexpr SystemError kErrorAccessDenied = 5;
inline constexpr SystemError kErrorInvalidHandle = 6;
inline constexpr SystemError kErrorNotEnoughMemory = 8;
inline constexpr SystemError kErrorInvalidData = 13;
inline constexpr SystemError kErrorOutOfMemory = 14;
inline constexpr SystemError kErrorNotSameDevice = 17;
inline constexpr SystemError kErrorNoMoreFiles = 18;
inline constexpr SystemError kErrorWriteProtect = 19;
inline constexpr SystemError kErrorNotReady = 21;
inline constexpr SystemError kErrorBadLength = 24;
inline constexpr SystemError kErrorGenFailure = 31;
inline constexpr SystemError kErrorSharingViolation = 32;
inline constexpr SystemError kErrorNotSupported = 50;
inline constexpr SystemError kErrorFileExists = 80;
inline constexpr SystemError kErrorInvalidParameter = 87;
inline constexpr SystemError kErrorBrokenPipe = 109;
inline constexpr SystemError kErrorDiskFull = 112;
inline constexpr SystemError kErrorCallNotImplemented = 120;
inline constexpr SystemError kErrorInsufficientBuffer = 122;
inline constexpr SystemError kErrorInvalidName = 123;
inline constexpr SystemError kErrorDirNotEmpty = 145;
inline constexpr SystemError kErrorBadArguments = 160;
inline constexpr SystemError kErrorBusy = 170;
inline constexpr SystemError kErrorAlreadyExists = 183;
inline constexpr SystemError kErrorBadExeFormat = 193;
inline constexpr SystemError kErrorFilenameExceedsRange = 206;
inline constexpr SystemError kErrorFileTooLarge = 223;
inline constexpr SystemError kErrorMoreData = 234;
inline constexpr SystemError kErrorWaitTimeout = 258;
inline constexpr SystemError kErrorNoMoreItems = 259;
inline constexpr SystemError kErrorDirectory = 267;
inline constexpr SystemError kErrorRegistryCorrupt = 1015;
inline constexpr SystemError kErrorKeyDeleted = 1018;
inline constexpr SystemError kErrorIoDevice = 1117;
inline constexpr SystemError kErrorCancelled = 1223;
inline constexpr SystemError kErrorNoSuchUser = 1317;
inline constexpr SystemError kErrorTimeout = 1460;
inline constexpr SystemError kErrorResourceTypeNotFound = 1813;
inline constexpr SystemError kErrorResourceNameNotFound = 1814;
inline constexpr SystemError kErrorCannotResolveFilename = 1921;

}  // namespace kestra
