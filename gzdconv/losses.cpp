// Lines on standard error, from the library's findings.
#include "losses.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "cli/console.h"

namespace gzdconv {

namespace {

using Line = std::array<char, 200>;

void put_stop(Line& line, const char* why, const GZD_FINDING& stop) {
  std::snprintf(line.data(), line.size(),
                "%s: reading stopped at byte %lld, %lld bytes before the end", why,
                static_cast<long long>(stop.place), static_cast<long long>(stop.count));
}

void put_unread(Line& line, const GZD_FINDING& unread) {
  std::snprintf(line.data(), line.size(),
                "%lld bytes behind the closing tag, from byte %lld on, were not read",
                static_cast<long long>(unread.count), static_cast<long long>(unread.place));
}

void put_log(Line& line) {
  std::snprintf(line.data(), line.size(),
                "the message log was not merged: it lacks a sync line or its closing line");
}

int decimals_of(double time) {
  return time == std::floor(time) ? 0 : 1;
}

void put_early_end(Line& line, const GZD_FINDING& end) {
  std::array<char, 60> others = {""};
  if (end.merged > 1) {
    std::snprintf(others.data(), others.size(), ", and in %u more blocks", end.merged - 1);
  }
  std::snprintf(line.data(), line.size(),
                "no samples from %.*f ms to the end of the block at %.*f ms%s",
                decimals_of(end.start), end.start, decimals_of(end.end), end.end, others.data());
}

// Whether the finding is a loss; then its line is put down.
bool put_loss(Line& line, const GZD_FINDING& finding) {
  switch (finding.kind) {
    case GZD_FINDING_CUT:
      put_stop(line, "the records end without their closing tag", finding);
      return true;
    case GZD_FINDING_DAMAGE:
      put_stop(line, "a record cannot be read", finding);
      return true;
    case GZD_FINDING_READ_ERROR:
      put_stop(line, "the file cannot be read on", finding);
      return true;
    case GZD_FINDING_TOO_LARGE:
      put_stop(line, "the recording is too large", finding);
      return true;
    case GZD_FINDING_UNREAD:
      put_unread(line, finding);
      return true;
    case GZD_FINDING_SAMPLES_END_EARLY:
      put_early_end(line, finding);
      return true;
    case GZD_FINDING_LOG_LEFT_OUT:
      put_log(line);
      return true;
    default:
      return false;
  }
}

}  // namespace

void report_losses(GZDFILE* handle, const std::string& input) {
  GZD_FINDING finding;
  Line line;
  for (unsigned i = 0; gzd_get_finding(handle, i, &finding) == 0; ++i) {
    if (put_loss(line, finding)) report_problem(input.c_str(), line.data());
  }
}

}  // namespace gzdconv
