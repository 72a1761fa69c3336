// Exported functions that find devices: the table of supported devices, the list, the version.
#include <algorithm>
#include <span>
#include <vector>

#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

using corvane::BridgeIdentity;
using corvane::BridgeLibrary;
using corvane::CopyText;
using corvane::FtFailure;
using corvane::Guarded;
using corvane::Store;

namespace {

constexpr DWORD kFormMask = FT_LIST_NUMBER_ONLY | FT_LIST_BY_INDEX | FT_LIST_ALL;
constexpr DWORD kNameMask = FT_OPEN_BY_SERIAL_NUMBER | FT_OPEN_BY_DESCRIPTION | FT_OPEN_BY_LOCATION;
constexpr DWORD kVersion = 0x010112;

// The name that the flags ask for, serial number by default; 6 for more than one.
DWORD NameFlag(DWORD flags) {
  switch (flags & kNameMask) {
    case 0:
    case FT_OPEN_BY_SERIAL_NUMBER:
      return FT_OPEN_BY_SERIAL_NUMBER;
    case FT_OPEN_BY_DESCRIPTION:
      return FT_OPEN_BY_DESCRIPTION;
    case FT_OPEN_BY_LOCATION:
      return FT_OPEN_BY_LOCATION;
    default:
      throw FtFailure(FT_INVALID_PARAMETER);
  }
}

void WriteName(const BridgeIdentity& identity, DWORD name, void* output) {
  if (name == FT_OPEN_BY_LOCATION) {
    *static_cast<DWORD*>(output) = identity.location;
  } else if (name == FT_OPEN_BY_DESCRIPTION) {
    CopyText(identity.description, output, BridgeIdentity::kDescriptionSize);
  } else {
    CopyText(identity.serial, output, BridgeIdentity::kSerialSize);
  }
}

void WriteAllNames(std::span<const BridgeIdentity> identities, DWORD name, void* array) {
  if (name == FT_OPEN_BY_LOCATION) {
    auto* const locations = static_cast<DWORD*>(array);
    std::transform(identities.begin(), identities.end(), locations, [](const auto& i) { return i.location; });
    return;
  }
  auto* const buffers = static_cast<char**>(array);
  for (std::size_t i = 0; i < identities.size() && buffers[i] != nullptr; ++i) {
    WriteName(identities[i], name, buffers[i]);
  }
}

FT_STATUS ListDevices(PVOID arg1, PVOID arg2, DWORD flags) {
  BridgeLibrary& library = BridgeLibrary::Instance();
  library.Start();  // before any look at the arguments
  switch (flags & kFormMask) {
    case FT_LIST_NUMBER_ONLY: {
      const DWORD count = library.CountDevices();
      if (arg1 == nullptr) {
        return FT_INVALID_PARAMETER;
      }
      *static_cast<DWORD*>(arg1) = count;
      return FT_OK;
    }
    case FT_LIST_BY_INDEX: {
      const DWORD name = NameFlag(flags);
      if (arg2 == nullptr) {
        return FT_INVALID_PARAMETER;
      }
      WriteName(library.Describe(reinterpret_cast<std::uintptr_t>(arg1), name != FT_OPEN_BY_LOCATION), name, arg2);
      return FT_OK;
    }
    case FT_LIST_ALL: {
      const DWORD name = NameFlag(flags);
      if (arg1 == nullptr || arg2 == nullptr) {
        return FT_INVALID_PARAMETER;
      }
      const auto identities = library.DescribeAll(name != FT_OPEN_BY_LOCATION);
      WriteAllNames(identities, name, arg1);
      *static_cast<DWORD*>(arg2) = static_cast<DWORD>(identities.size());
      return FT_OK;
    }
    default:
      return FT_INVALID_PARAMETER;
  }
}

}  // namespace

FT_STATUS FT_SetVIDPID(DWORD vid, DWORD pid) {
  return Guarded([&] {
    BridgeLibrary::Instance().SetCustomId({vid, pid});
    return FT_OK;
  });
}

FT_STATUS FT_GetVIDPID(DWORD* vid, DWORD* pid) {
  return Guarded([&] {
    if (vid == nullptr || pid == nullptr) {
      return FT_INVALID_PARAMETER;
    }
    const auto id = BridgeLibrary::Instance().CustomId();
    *vid = id.vid;
    *pid = id.pid;
    return FT_OK;
  });
}

FT_STATUS FT_ListDevices(PVOID arg1, PVOID arg2, DWORD flags) {
  return Guarded([&] { return ListDevices(arg1, arg2, flags); });
}

FT_STATUS FT_CreateDeviceInfoList(LPDWORD count) {
  return Guarded([&] {
    if (count == nullptr) {
      return FT_INVALID_PARAMETER;
    }
    *count = 0;
    *count = BridgeLibrary::Instance().CreateList();
    return FT_OK;
  });
}

FT_STATUS FT_GetDeviceInfoList(FT_DEVICE_LIST_INFO_NODE* nodes, LPDWORD count) {
  return Guarded([&] {
    if (count == nullptr) {
      return FT_INVALID_PARAMETER;
    }
    const auto list = BridgeLibrary::Instance().StoredList();
    if (nodes != nullptr) {
      std::copy(list.begin(), list.end(), nodes);
    }
    *count = static_cast<DWORD>(list.size());
    return FT_OK;
  });
}

FT_STATUS FT_GetDeviceInfoDetail(DWORD index, LPDWORD flags, LPDWORD type, LPDWORD id, LPDWORD locId, LPVOID serial,
                                 LPVOID description, FT_HANDLE* handle) {
  return Guarded([&] {
    const auto list = BridgeLibrary::Instance().StoredList();
    if (index >= list.size()) {
      return FT_DEVICE_NOT_FOUND;
    }
    const FT_DEVICE_LIST_INFO_NODE& node = list[index];
    Store(flags, node.Flags);
    Store(type, node.Type);
    Store(id, node.ID);
    Store(locId, node.LocId);
    if (serial != nullptr) {
      std::copy(std::begin(node.SerialNumber), std::end(node.SerialNumber), static_cast<char*>(serial));
    }
    if (description != nullptr) {
      std::copy(std::begin(node.Description), std::end(node.Description), static_cast<char*>(description));
    }
    Store(handle, node.ftHandle);
    return FT_OK;
  });
}

FT_STATUS FT_GetLibraryVersion(LPDWORD version) {
  if (version == nullptr) {
    return FT_INVALID_PARAMETER;
  }
  *version = kVersion;
  return FT_OK;
}

FT_STATUS FT_GetDriverVersion(FT_HANDLE handle, LPDWORD version) {
  return corvane::OnDevice(handle, [&](auto&) { return FT_GetLibraryVersion(version); });
}
