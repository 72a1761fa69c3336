#include "bridge/UmockdevPreload.h"

#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <string_view>

namespace {

constexpr const char* kPreload = "libumockdev-preload.so.0";
constexpr const char* kTried = "CORVANE_UMOCKDEV_PRELOADED";

// Path of the first loaded shared library whose path contains one of the names; empty when there is none.
std::string FindLibrary(std::initializer_list<std::string_view> names) {
  struct Search {
    std::initializer_list<std::string_view> names;
    std::string path;
  } search{names, {}};
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* data) {
        auto& wanted = *static_cast<Search*>(data);
        const std::string_view path = info->dlpi_name;
        const bool found = std::any_of(wanted.names.begin(), wanted.names.end(),
                                       [path](std::string_view name) { return path.find(name) != path.npos; });
        if (found) {
          wanted.path = path;
        }
        return found ? 1 : 0;
      },
      &search);
  return search.path;
}

[[noreturn]] void GiveUp(const char* reason) {
  std::fprintf(stderr, "%s: %s\n", kPreload, reason);
  std::exit(EXIT_FAILURE);
}

}  // namespace

bool corvane::HasUmockdevPreload() {
  return !FindLibrary({kPreload}).empty();
}

void corvane::EnsureUmockdevPreload(char** argv) {
  if (HasUmockdevPreload()) {
    return;
  }
  if (std::getenv(kTried) != nullptr) {
    GiveUp("cannot be preloaded; is umockdev installed?");
  }
  std::string preload = FindLibrary({"libasan.so", "libtsan.so", "libclang_rt.asan", "libclang_rt.tsan"});
  preload += preload.empty() ? kPreload : std::string(":") + kPreload;
  if (const char* const others = std::getenv("LD_PRELOAD"); others != nullptr && *others != '\0') {
    preload += std::string(":") + others;
  }
  setenv("LD_PRELOAD", preload.c_str(), 1);
  setenv(kTried, "1", 1);
  execv("/proc/self/exe", argv);
  GiveUp("cannot start the program anew");
}
