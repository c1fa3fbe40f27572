// Where a user is: what is advised there differs.
#pragma once

namespace kestra::cli {

enum class Place {
  CommandLine,  // has options
  Shell,        // has dot commands
};

}  // namespace kestra::cli
