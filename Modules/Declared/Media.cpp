#include "Modules/Declared/DeclaredModules.h"

namespace kestra {
namespace {

using enum ParamType;

constinit const ClassDecl kMixerControlValue = {.name = "MixerControlValue"};
constexpr const ClassDecl* kMixerControlChannelChildren[] = {&kMixerControlValue};
constinit const ClassDecl kMixerControlChannel = {.name = "MixerControlChannel",
                                                  .children = kMixerControlChannelChildren};
constexpr const ClassDecl* kMixerControlChildren[] = {&kMixerControlChannel};
constinit const ClassDecl kMixerControl = {.name = "MixerControl",
                                           .children = kMixerControlChildren};
constexpr const ClassDecl* kMixerLineChildren[] = {&kMixerControl};
constinit const ClassDecl kMixerLine = {.name = "MixerLine", .children = kMixerLineChildren};
constexpr const ClassDecl* kMixerChildren[] = {&kMixerLine};
constinit const ClassDecl kMixer = {.name = "Mixer", .children = kMixerChildren};
constexpr const ClassDecl* kMixersChildren[] = {&kMixer};

constinit const ClassDecl kAudio = {.name = "Audio"};
constinit const ClassDecl kMCI = {.name = "MCI"};
constinit const ClassDecl kACM = {.name = "ACM"};
constinit const ClassDecl kICM = {.name = "ICM"};
constinit const ClassDecl kCAP = {.name = "CAP"};
constinit const ClassDecl kJoystick = {.name = "Joystick"};
constexpr const ClassDecl* kMultimediaChildren[] = {&kAudio, &kMCI, &kACM,
                                                    &kICM,   &kCAP, &kJoystick};

constinit const ClassDecl kDisplayMonitor = {.name = "DisplayMonitor"};
constexpr const ClassDecl* kDisplayDeviceChildren[] = {&kDisplayMonitor};
constinit const ClassDecl kDisplayDevice = {.name = "DisplayDevice",
                                            .children = kDisplayDeviceChildren};
constexpr const ClassDecl* kDisplayChildren[] = {&kDisplayDevice};

constinit const ClassDecl kDirectDisplayMode = {.name = "DirectDisplayMode"};
constinit const ClassDecl kDirect3D = {.name = "Direct3D"};
constexpr const ClassDecl* kDirectDrawChildren[] = {&kDirectDisplayMode, &kDirect3D};
constinit const ClassDecl kDirectDraw = {.name = "DirectDraw", .children = kDirectDrawChildren};
constinit const ClassDecl kRegisteredFilter = {.name = "RegisteredFilter"};
constexpr const ClassDecl* kSystemDeviceChildren[] = {&kRegisteredFilter};
constinit const ClassDecl kSystemDevice = {.name = "SystemDevice",
                                           .children = kSystemDeviceChildren};
constinit const ClassDecl kDirectInput = {.name = "DirectInput"};
constinit const ClassDecl kDirectSound = {.name = "DirectSound"};
constexpr const ClassDecl* kDirectXChildren[] = {&kDirectDraw, &kSystemDevice, &kDirectInput,
                                                 &kDirectSound};
constexpr ArgDecl kDirectXArgs[] = {{"ShowDraw", Dword},
                                    {"ShowInput", Dword},
                                    {"ShowSound", Dword},
                                    {"ShowSysDev", Dword},
                                    {"ShowAllSysDev", Dword}};

constinit const ClassDecl kMMDevicePartChannel = {.name = "MMDevicePartChannel"};
constexpr const ClassDecl* kMMDevicePartChildren[] = {&kMMDevicePartChannel};
constinit const ClassDecl kMMDevicePart = {.name = "MMDevicePart",
                                           .children = kMMDevicePartChildren};
constexpr const ClassDecl* kMMDeviceChildren[] = {&kMMDevicePart};
constinit const ClassDecl kMMDevice = {.name = "MMDevice", .children = kMMDeviceChildren};
constexpr const ClassDecl* kMMDevicesChildren[] = {&kMMDevice};

}  // namespace

constinit const ClassDecl kMixersModule = {.name = "Mixers",
                                           .children = kMixersChildren,
                                           .description = "Sound mixers with their controls."};
constinit const ClassDecl kMultimediaModule = {
    .name = "Multimedia",
    .children = kMultimediaChildren,
    .description = "Sound devices, codecs, capture drivers and joysticks."};
constinit const ClassDecl kDisplayModule = {
    .name = "Display",
    .children = kDisplayChildren,
    .description = "Display adapters and the monitors on them."};
constinit const ClassDecl kDirectXModule = {
    .name = "DirectX",
    .children = kDirectXChildren,
    .args = kDirectXArgs,
    .description = "Graphics, input, sound and filter devices as DirectX sees them."};
constinit const ClassDecl kMMDevicesModule = {
    .name = "MMDevices",
    .children = kMMDevicesChildren,
    .description = "Audio end points with their parts and channels."};

}  // namespace kestra
