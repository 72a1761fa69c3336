#include "support/ScriptedBridge.h"

#include <algorithm>

#include "platform/TimeSource.h"

namespace {

/// The one in force: every function below is called while there is one.
ScriptedBridge* gBridge = nullptr;

using Device = ScriptedBridge::Device;

std::uint64_t Now() {
  return corvane::Time().MonotonicMicroseconds();
}

/// The open device behind a handle; null for any other handle.
Device* Find(FT_HANDLE handle) {
  for (const auto& device : gBridge->devices) {
    if (device->isOpen && device.get() == handle) {
      return device.get();
    }
  }
  return nullptr;
}

}  // namespace

ScriptedController::ScriptedController() : mState(std::make_shared<State>()) {
  SetValue("SYSTEMINFO", "Tivan,CV-LX,SN1,Controller,V2.8");
}

std::string ScriptedController::Reply(const std::string& line, const std::string& value) {
  return line + "\r\n" + value + "\r\nOK\r";
}

std::string ScriptedController::operator()(const std::string& line) {
  mState->lines.push_back(line);
  if (const auto answer = mState->answers.find(line); answer != mState->answers.end()) {
    return answer->second;
  }
  const std::size_t mark = line.find('?');
  if (mark == std::string::npos) {
    return "OK\r";
  }
  for (const std::string& key : {line, line.substr(0, mark)}) {
    if (const auto value = mState->values.find(key); value != mState->values.end()) {
      return Reply(line, value->second);
    }
  }
  return "E01\r";
}

void ScriptedBridge::Device::Queue(const std::string& bytes, unsigned int delayMs, unsigned int perByteMs) {
  std::uint64_t due = Now() + std::uint64_t{delayMs} * 1000U;
  for (const char byte : bytes) {
    pending.push_back({byte, due});
    due += std::uint64_t{perByteMs} * 1000U;
  }
}

ScriptedBridge::ScriptedBridge() {
  gBridge = this;
}

ScriptedBridge::~ScriptedBridge() {
  gBridge = nullptr;
}

ScriptedBridge::Device& ScriptedBridge::Add() {
  devices.push_back(std::make_unique<Device>());
  return *devices.back();
}

ScriptedBridge::Device& ScriptedBridge::Add(Product product, const ScriptedController& controller) {
  Device& device = Add();
  device.product = product;
  device.responder = controller;
  return device;
}

extern "C" {

FT_STATUS FT_SetVIDPID(DWORD vid, DWORD pid) {
  gBridge->products.emplace_back(vid, pid);
  return FT_OK;
}

FT_STATUS FT_ListDevices(PVOID arg1, PVOID /*arg2*/, DWORD flags) {
  if (flags != FT_LIST_NUMBER_ONLY || arg1 == nullptr) {
    return FT_INVALID_PARAMETER;
  }
  *static_cast<DWORD*>(arg1) = static_cast<DWORD>(gBridge->devices.size());
  return FT_OK;
}

FT_STATUS FT_CreateDeviceInfoList(LPDWORD count) {
  *count = gBridge->createStatus == FT_OK ? static_cast<DWORD>(gBridge->devices.size()) : 0;
  return gBridge->createStatus;
}

FT_STATUS FT_GetDeviceInfoList(FT_DEVICE_LIST_INFO_NODE* nodes, LPDWORD count) {
  if (gBridge->infoStatus != FT_OK) {
    return gBridge->infoStatus;
  }
  *count = 0;
  for (const auto& device : gBridge->devices) {
    FT_DEVICE_LIST_INFO_NODE& node = nodes[(*count)++];
    node = {};
    node.Flags = device->isOpen || device->openStatus != FT_OK ? FT_FLAGS_OPENED : 0;
    if (device->isOpen || device->openStatus == FT_OK) {
      node.ID = device->product.first << 16 | device->product.second;
      node.ftHandle = device->isOpen ? device.get() : nullptr;
    }
  }
  return FT_OK;
}

FT_STATUS FT_Open(int index, FT_HANDLE* handle) {
  if (index < 0 || static_cast<std::size_t>(index) >= gBridge->devices.size()) {
    return FT_DEVICE_NOT_FOUND;
  }
  Device& device = *gBridge->devices[static_cast<std::size_t>(index)];
  if (device.isOpen || device.openStatus != FT_OK) {
    return device.isOpen ? static_cast<FT_STATUS>(FT_DEVICE_NOT_OPENED) : device.openStatus;
  }
  device.isOpen = true;
  ++device.opens;
  *handle = &device;
  return FT_OK;
}

FT_STATUS FT_Close(FT_HANDLE handle) {
  Device* device = Find(handle);
  if (device == nullptr) {
    return FT_INVALID_HANDLE;
  }
  device->isOpen = false;
  device->pending.clear();
  device->line.clear();
  return FT_OK;
}

FT_STATUS FT_Read(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received) {
  *received = 0;
  Device* device = Find(handle);
  if (device == nullptr) {
    return FT_INVALID_HANDLE;
  }
  ++device->reads;
  if (device->readStatus != FT_OK) {
    return device->readStatus;
  }
  const DWORD timeoutMs = device->timeouts.empty() ? 5000 : device->timeouts.back().first;
  const std::uint64_t deadline = Now() + (device->readsReturnAtOnce ? 0 : std::uint64_t{timeoutMs} * 1000U);
  while (*received < count) {
    const std::uint64_t now = Now();
    const std::uint64_t due = device->pending.empty() ? deadline : device->pending.front().due;
    if (!device->pending.empty() && due <= now) {
      static_cast<char*>(buffer)[(*received)++] = device->pending.front().byte;
      device->pending.pop_front();
    } else if (now >= deadline) {
      break;
    } else {
      corvane::Time().SleepMicroseconds(std::min(due, deadline) - now);
    }
  }
  return FT_OK;
}

FT_STATUS FT_Write(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written) {
  *written = 0;
  Device* device = Find(handle);
  if (device == nullptr) {
    return FT_INVALID_HANDLE;
  }
  if (device->writeStatus != FT_OK) {
    return device->writeStatus;
  }
  *written = count;
  const std::string bytes(static_cast<const char*>(buffer), count);
  device->written += bytes;
  for (const char c : bytes) {
    if (c != '\r') {
      device->line += c;
    } else if (device->responder) {
      device->Queue(device->responder(std::exchange(device->line, {})), device->answerDelayMs);
    }
  }
  return FT_OK;
}

FT_STATUS FT_SetTimeouts(FT_HANDLE handle, DWORD readTimeout, DWORD writeTimeout) {
  if (Device* device = Find(handle); device != nullptr) {
    device->timeouts.emplace_back(readTimeout, writeTimeout);
    return FT_OK;
  }
  return FT_INVALID_HANDLE;
}

FT_STATUS FT_SetLatencyTimer(FT_HANDLE /*handle*/, UCHAR /*latency*/) {
  return FT_NOT_SUPPORTED;
}

FT_STATUS FT_Purge(FT_HANDLE handle, DWORD mask) {
  if (Device* device = Find(handle); device != nullptr) {
    device->purges.push_back(mask);
    return FT_OK;
  }
  return FT_INVALID_HANDLE;
}
}
