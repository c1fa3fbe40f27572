#include "cli/Session.h"

#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

// Empty for an option that is not given.
std::string FullPathOf(const std::optional<std::string>& path) {
  return path ? FullPath(*path) : std::string();
}

}  // namespace

CSessionHandle MakeSession(const Options& options) {
  kestra_options settings{};
  settings.struct_size = sizeof(settings);
  const std::string log = FullPathOf(options.logDirectory);
  const std::string cache = FullPathOf(options.cacheDirectory);
  if (!log.empty()) settings.log_directory = log.c_str();
  if (!cache.empty()) settings.cache_directory = cache.c_str();
  if (options.imageDirectory) settings.image_directory = options.imageDirectory->c_str();
  if (options.imageUser) settings.image_user = options.imageUser->c_str();
  auto session = Take<CSessionHandle>(kestra_session_create, &settings);
  if (!session) throw CUsageError(kestra_create_error());
  if (options.pluginsDirectory) {
    Check(kestra_session_set_plugins_dir(session.get(), options.pluginsDirectory->c_str()));
  }
  Check(kestra_session_allow_active(session.get(), options.settings.allowActive ? 1 : 0));
  return session;
}

}  // namespace kestra::cli
