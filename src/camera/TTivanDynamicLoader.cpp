#include "camera/TTivanDynamicLoader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace TivanUtility {
namespace {

constexpr const char* kNoError = "No Error";

std::string Join(const std::string& directory, const std::string& file) {
  return directory.empty() || directory.back() == '/' ? directory + file : directory + '/' + file;
}

}  // namespace

TTivanDynamicLoader::TTivanDynamicLoader(std::string library, std::string searchDirectory, bool searchDirectoryOnly)
    : mLibrary(std::move(library)),
      mSearchDirectory(std::move(searchDirectory)),
      mSearchDirectoryOnly(searchDirectoryOnly) {
  SetErrorText(kNoError);
}

TTivanDynamicLoader::~TTivanDynamicLoader() {
  Close();
}

int TTivanDynamicLoader::Open() {
  if (mHandle != nullptr) {
    return kOpened;
  }
  const std::string candidate = Join(mSearchDirectory, mLibrary);
  if (access(candidate.c_str(), F_OK) == 0) {
    mHandle = dlopen(candidate.c_str(), RTLD_LAZY);
  } else if (mSearchDirectoryOnly) {
    return kNotInSearchDirectory;
  } else {
    mHandle = dlopen(mLibrary.c_str(), RTLD_LAZY);
  }
  if (mHandle == nullptr) {
    SetErrorText(dlerror());
    return kLoadFailed;
  }
  SetErrorText(kNoError);
  return kOpened;
}

void TTivanDynamicLoader::Close() {
  if (mHandle != nullptr) {
    dlclose(mHandle);
    mHandle = nullptr;
  }
}

void* TTivanDynamicLoader::GetFunction(const char* name) const {
  return mHandle != nullptr ? dlsym(mHandle, name) : nullptr;
}

void TTivanDynamicLoader::SetErrorText(const char* text) {
  std::snprintf(mErrorText.data(), mErrorText.size(), "%s", text != nullptr ? text : "");
}

}  // namespace TivanUtility
