// What --version and sidecars tell.
#include <fmt/format.h>

#include <CLI/Version.hpp>
#include <nlohmann/json.hpp>
#include <string_view>

#include "command.h"
#include "gzd.h"
#ifdef GZDTOOL_HAS_LIBDEFLATE
#include <libdeflate.h>
#else
#include <zlib.h>
#endif

namespace gzdtool {

namespace {

#ifdef GZDTOOL_HAS_LIBDEFLATE
constexpr const char* compression = "libdeflate " LIBDEFLATE_VERSION_STRING;
#else
constexpr const char* compression = "zlib " ZLIB_VERSION;
#endif

}  // namespace

std::string version_text() {
  constexpr std::string_view commit = GZDTOOL_COMMIT;
  return fmt::format(
      "gzdtool {}{}{}\ngzdapi {}\nCLI11 {}, nlohmann-json {}.{}.{}, fmt {}.{}.{}, {}",
      GZDTOOL_VERSION, commit.empty() ? "" : ", commit ", commit, gzd_get_version(), CLI11_VERSION,
      NLOHMANN_JSON_VERSION_MAJOR, NLOHMANN_JSON_VERSION_MINOR, NLOHMANN_JSON_VERSION_PATCH,
      FMT_VERSION / 10000, FMT_VERSION / 100 % 100, FMT_VERSION % 100, compression);
}

}  // namespace gzdtool
