#include "support/ScriptedBridge.h"

#include <algorithm>

#include "platform/TimeSource.h"

namespace {

ScriptedBridge* gBridge = nullptr;

std::uint64_t Now() {
  return corvane::Time().MonotonicMicroseconds();
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
  if (mState->silent) {
    return {};
  }
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
    mPending.push_back({byte, due});
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
  mDevices.push_back(std::make_unique<Device>());
  return *mDevices.back();
}

ScriptedBridge::Device& ScriptedBridge::Add(unsigned int vid, unsigned int pid, const ScriptedController& controller) {
  Device& device = Add();
  device.vid = vid;
  device.pid = pid;
  device.responder = controller;
  return device;
}

ScriptedBridge::Device* ScriptedBridge::Find(FT_HANDLE handle) {
  const auto found = std::find_if(mDevices.begin(), mDevices.end(),
                                  [handle](const auto& device) { return device->isOpen && device.get() == handle; });
  return found != mDevices.end() ? found->get() : nullptr;
}

FT_STATUS ScriptedBridge::Number(DWORD& count) const {
  if (numberStatus == FT_OK) {
    count = static_cast<DWORD>(mDevices.size());
  }
  return numberStatus;
}

FT_STATUS ScriptedBridge::CreateList(DWORD& count) {
  mList.clear();
  count = 0;
  if (createStatus != FT_OK) {
    return createStatus;
  }
  for (const auto& device : mDevices) {
    FT_DEVICE_LIST_INFO_NODE node{};
    const bool free = !device->isOpen && device->openStatus == FT_OK;
    node.Flags = free ? 0 : 1;
    node.Type = 3;
    if (free || device->isOpen) {
      node.ID = device->vid << 16 | device->pid;
      device->serial.copy(node.SerialNumber, sizeof(node.SerialNumber) - 1);
      device->description.copy(node.Description, sizeof(node.Description) - 1);
      node.ftHandle = device->isOpen ? device.get() : nullptr;
    }
    mList.push_back(node);
  }
  count = static_cast<DWORD>(mList.size());
  return FT_OK;
}

FT_STATUS ScriptedBridge::GetList(FT_DEVICE_LIST_INFO_NODE* nodes, DWORD& count) const {
  if (infoStatus != FT_OK) {
    return infoStatus;
  }
  if (nodes != nullptr) {
    std::copy(mList.begin(), mList.end(), nodes);
  }
  count = static_cast<DWORD>(mList.size());
  return FT_OK;
}

FT_STATUS ScriptedBridge::Open(int index, FT_HANDLE& handle) {
  if (index < 0 || static_cast<std::size_t>(index) >= mDevices.size()) {
    return FT_DEVICE_NOT_FOUND;
  }
  Device& device = *mDevices[static_cast<std::size_t>(index)];
  if (device.openStatus != FT_OK) {
    return device.openStatus;
  }
  if (device.isOpen) {
    return FT_DEVICE_NOT_OPENED;
  }
  device.isOpen = true;
  ++device.opens;
  handle = &device;
  return FT_OK;
}

FT_STATUS ScriptedBridge::Close(FT_HANDLE handle) {
  Device* device = Find(handle);
  if (device == nullptr) {
    return FT_INVALID_HANDLE;
  }
  device->isOpen = false;
  ++device->closes;
  device->mPending.clear();
  device->mLine.clear();
  return FT_OK;
}

FT_STATUS ScriptedBridge::Read(FT_HANDLE handle, char* buffer, DWORD count, DWORD& received) {
  received = 0;
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
  while (received < count) {
    const std::uint64_t now = Now();
    const std::uint64_t due = device->mPending.empty() ? deadline : device->mPending.front().due;
    if (!device->mPending.empty() && due <= now) {
      buffer[received++] = device->mPending.front().byte;
      device->mPending.pop_front();
    } else if (now >= deadline) {
      break;
    } else {
      corvane::Time().SleepMicroseconds(std::min(due, deadline) - now);
    }
  }
  return FT_OK;
}

FT_STATUS ScriptedBridge::Write(FT_HANDLE handle, const char* buffer, DWORD count, DWORD& written) {
  written = 0;
  Device* device = Find(handle);
  if (device == nullptr) {
    return FT_INVALID_HANDLE;
  }
  if (device->writeStatus != FT_OK) {
    return device->writeStatus;
  }
  written = count;
  device->written.append(buffer, count);
  for (const char c : std::string(buffer, count)) {
    if (c != '\r') {
      device->mLine += c;
    } else if (device->responder) {
      device->Queue(device->responder(std::exchange(device->mLine, {})), device->answerDelayMs, device->byteDelayMs);
    }
  }
  return FT_OK;
}

FT_STATUS ScriptedBridge::SetTimeouts(FT_HANDLE handle, DWORD readMs, DWORD writeMs) {
  Device* device = Find(handle);
  if (device == nullptr) {
    return FT_INVALID_HANDLE;
  }
  device->timeouts.emplace_back(readMs, writeMs);
  return FT_OK;
}

FT_STATUS ScriptedBridge::Purge(FT_HANDLE handle, DWORD mask) {
  Device* device = Find(handle);
  if (device == nullptr) {
    return FT_INVALID_HANDLE;
  }
  device->purges.push_back(mask);
  if ((mask & 1U) != 0) {
    device->mPending.clear();
  }
  return FT_OK;
}

extern "C" {

FT_STATUS FT_SetVIDPID(DWORD vid, DWORD pid) {
  if (gBridge != nullptr) {
    gBridge->products.emplace_back(vid, pid);
  }
  return FT_OK;
}

FT_STATUS FT_GetVIDPID(DWORD* vid, DWORD* pid) {
  if (gBridge == nullptr || gBridge->products.empty() || vid == nullptr || pid == nullptr) {
    return FT_INVALID_PARAMETER;
  }
  *vid = gBridge->products.back().first;
  *pid = gBridge->products.back().second;
  return FT_OK;
}

FT_STATUS FT_ListDevices(PVOID arg1, PVOID /*arg2*/, DWORD flags) {
  if (gBridge == nullptr) {
    return FT_OTHER_ERROR;
  }
  return flags == FT_LIST_NUMBER_ONLY && arg1 != nullptr ? gBridge->Number(*static_cast<DWORD*>(arg1))
                                                         : static_cast<FT_STATUS>(FT_INVALID_PARAMETER);
}

FT_STATUS FT_CreateDeviceInfoList(LPDWORD count) {
  return gBridge != nullptr ? gBridge->CreateList(*count) : static_cast<FT_STATUS>(FT_OTHER_ERROR);
}

FT_STATUS FT_GetDeviceInfoList(FT_DEVICE_LIST_INFO_NODE* nodes, LPDWORD count) {
  return gBridge != nullptr ? gBridge->GetList(nodes, *count) : static_cast<FT_STATUS>(FT_OTHER_ERROR);
}

FT_STATUS FT_Open(int index, FT_HANDLE* handle) {
  return gBridge != nullptr ? gBridge->Open(index, *handle) : static_cast<FT_STATUS>(FT_OTHER_ERROR);
}

FT_STATUS FT_Close(FT_HANDLE handle) {
  return gBridge != nullptr ? gBridge->Close(handle) : static_cast<FT_STATUS>(FT_INVALID_HANDLE);
}

FT_STATUS FT_Read(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received) {
  if (gBridge == nullptr) {
    return FT_INVALID_HANDLE;
  }
  return received != nullptr ? gBridge->Read(handle, static_cast<char*>(buffer), count, *received)
                             : static_cast<FT_STATUS>(FT_INVALID_PARAMETER);
}

FT_STATUS FT_Write(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written) {
  return gBridge != nullptr ? gBridge->Write(handle, static_cast<const char*>(buffer), count, *written)
                            : static_cast<FT_STATUS>(FT_INVALID_HANDLE);
}

FT_STATUS FT_SetTimeouts(FT_HANDLE handle, DWORD readTimeout, DWORD writeTimeout) {
  return gBridge != nullptr ? gBridge->SetTimeouts(handle, readTimeout, writeTimeout)
                            : static_cast<FT_STATUS>(FT_INVALID_HANDLE);
}

FT_STATUS FT_Purge(FT_HANDLE handle, DWORD mask) {
  return gBridge != nullptr ? gBridge->Purge(handle, mask) : static_cast<FT_STATUS>(FT_INVALID_HANDLE);
}
}
