// Loads a shared library at run time and resolves its functions. Used for the camera SDK.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace TivanUtility {

class TTivanDynamicLoader {
 public:
  static constexpr std::size_t kErrorTextSize = 256;

  enum TOpenResult : int {
    kOpened = 0,
    kNotInSearchDirectory = 1,
    kLoadFailed = 2,
  };

  /// library: file name; searchDirectory: looked into first; searchDirectoryOnly: leave the system's dynamic linker
  /// out.
  explicit TTivanDynamicLoader(std::string library, std::string searchDirectory = "./",
                               bool searchDirectoryOnly = false);
  /// Unloads the library.
  ~TTivanDynamicLoader();
  TTivanDynamicLoader(const TTivanDynamicLoader&) = delete;
  TTivanDynamicLoader& operator=(const TTivanDynamicLoader&) = delete;

  /// Loads the library from the search directory if it exists there, else by its bare name the way the system's dynamic
  /// linker searches. A TOpenResult; kOpened at once when it is open already.
  int Open();
  /// Unloads the library; pointers into it must not be used any more.
  void Close();
  /// The address of a symbol of the open library; null when there is none or the library is not open.
  void* GetFunction(const char* name) const;
  /// The system's text for the last failure to load, or "No Error". Valid until the next Open.
  const char* GetErrorText() const { return mErrorText.data(); }

 private:
  void SetErrorText(const char* text);

  std::string mLibrary;
  std::string mSearchDirectory;
  bool mSearchDirectoryOnly;
  void* mHandle = nullptr;
  std::array<char, kErrorTextSize> mErrorText{};
};

}  // namespace TivanUtility
