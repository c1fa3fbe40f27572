#include <utility>

#include "Modules/ModuleTable.h"
#include "front/session/Sorrel.h"
#include "platform/image/Image.h"

namespace kestra {

bool ImageSetup(const std::string& directory, const std::string& userName, SessionSetup& setup,
                std::string& refusal) {
  auto notices = MakeRef<CNotices>();
  image::ImageOptions options{directory, userName,
                              [notices](const std::string& text) { notices->Add(text); }};
  Ref<CMachine> machine;
  if (!image::OpenImage(options, machine, refusal)) return false;
  setup = {BuiltInModules(), std::move(machine), {}, std::move(notices)};
  return true;
}

}  // namespace kestra
