// Exported functions that open, close, read and write a device, and tell what it is.
#include <span>
#include <string>

#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

using corvane::BridgeDevice;
using corvane::BridgeIdentity;
using corvane::BridgeLibrary;
using corvane::CopyText;
using corvane::Guarded;
using corvane::OnDevice;
using corvane::Store;

namespace {

constexpr ULONG kRequestStep = 64;

FT_HANDLE OpenNamed(PVOID arg, DWORD flags) {
  BridgeLibrary& library = BridgeLibrary::Instance();
  if (flags == FT_OPEN_BY_LOCATION) {
    return library.OpenByLocation(static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(arg)));
  }
  if (arg == nullptr || (flags != FT_OPEN_BY_SERIAL_NUMBER && flags != FT_OPEN_BY_DESCRIPTION)) {
    throw corvane::FtFailure(FT_INVALID_PARAMETER);
  }
  const auto name =
      flags == FT_OPEN_BY_SERIAL_NUMBER ? BridgeLibrary::Name::kSerial : BridgeLibrary::Name::kDescription;
  return library.OpenByText(name, static_cast<const char*>(arg));
}

}  // namespace

FT_STATUS FT_Open(int index, FT_HANDLE* handle) {
  return Guarded([&] {
    if (handle == nullptr) {
      return FT_INVALID_PARAMETER;
    }
    *handle = BridgeLibrary::Instance().OpenByIndex(index);
    return FT_OK;
  });
}

FT_STATUS FT_OpenEx(PVOID arg, DWORD flags, FT_HANDLE* handle) {
  return Guarded([&] {
    if (handle == nullptr) {
      return FT_INVALID_PARAMETER;
    }
    *handle = OpenNamed(arg, flags);
    return FT_OK;
  });
}

FT_STATUS FT_Close(FT_HANDLE handle) {
  return Guarded([&] { return BridgeLibrary::Instance().Close(handle) ? FT_OK : FT_INVALID_HANDLE; });
}

FT_STATUS FT_Read(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received) {
  const corvane::CancelShield shield;  // outside the frame's own, so that it knows what the host allows
  return OnDevice(handle, [&](BridgeDevice& device) {
    if (buffer == nullptr || received == nullptr) {
      return FT_INVALID_PARAMETER;
    }
    *received = 0;
    if (count == 0) {
      return FT_OK;
    }
    return device.Read({static_cast<std::uint8_t*>(buffer), count}, *received, shield);
  });
}

FT_STATUS FT_Write(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written) {
  return OnDevice(handle, [&](BridgeDevice& device) { return device.Write(buffer, count, written); });
}

FT_STATUS FT_WriteSingleThread(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written) {
  return FT_Write(handle, buffer, count, written);
}

FT_STATUS FT_WriteMultiThread(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written) {
  return FT_Write(handle, buffer, count, written);
}

FT_STATUS FT_SetTimeouts(FT_HANDLE handle, DWORD readTimeout, DWORD writeTimeout) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    device.SetTimeouts(readTimeout, writeTimeout);
    return FT_OK;
  });
}

FT_STATUS FT_Purge(FT_HANDLE handle, DWORD mask) {
  return OnDevice(handle, [&](BridgeDevice& device) { return device.Purge(mask); });
}

FT_STATUS FT_SetUSBParameters(FT_HANDLE handle, ULONG inTransferSize, ULONG) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    if (inTransferSize < kRequestStep || inTransferSize > corvane::ReadPipeline::kMaxRequest ||
        inTransferSize % kRequestStep != 0) {
      return FT_INVALID_PARAMETER;
    }
    device.Reads().SetRequestLength(inTransferSize);
    return FT_OK;
  });
}

FT_STATUS FT_SetDeadmanTimeout(FT_HANDLE handle, ULONG timeout) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    device.SetControlTimeout(timeout);
    return FT_OK;
  });
}

FT_STATUS FT_GetDeviceInfo(FT_HANDLE handle, FT_DEVICE* type, LPDWORD id, PCHAR serial, PCHAR description, LPVOID) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    const BridgeIdentity& identity = device.Identity();
    Store(type, identity.type);
    Store(id, identity.id);
    if (serial != nullptr) {
      CopyText(identity.serial, serial, BridgeIdentity::kSerialSize);
    }
    if (description != nullptr) {
      CopyText(identity.description, description, BridgeIdentity::kDescriptionSize);
    }
    return FT_OK;
  });
}

FT_STATUS FT_GetDeviceLocId(FT_HANDLE handle, LPDWORD locId) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    if (locId == nullptr) {
      return FT_INVALID_PARAMETER;
    }
    *locId = device.Identity().location;
    return FT_OK;
  });
}
