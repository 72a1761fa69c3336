#include "controller/TMerakOrbisCom.h"

#include <algorithm>
#include <locale>
#include <string_view>

#include "controller/MerakWords.h"
#include "controller/TMerakControlI2C.h"
#include "controller/TMerakControlUSB.h"
#include "controller/TimeLimits.h"
#include "platform/DebugOutput.h"
#include "platform/TimeSource.h"

namespace {

using corvane::ReplyWatch;
using corvane::words::kGreeting;

constexpr char kLineEnd = TMerakControl::kLineEnd;
constexpr int kEchoAttempts = 3;

const corvane::TransportTimeouts& TimeoutsOf(ReplyWatch::Patience patience) {
  return patience == ReplyWatch::Patience::kShort ? corvane::kShortTimeouts : corvane::kLongTimeouts;
}

// Neither mask has a bit that the bridge acts on: buffers stay as they are, and the echo test drops stale lines.
constexpr unsigned int kPurgeMasks[] = {4, 8};

bool StartsWithWord(const std::string& reply, const std::string& word) {
  return TMerakOrbisCom::ToUpper(reply.substr(0, word.size())) == TMerakOrbisCom::ToUpper(word);
}

}  // namespace

TMerakOrbisCom::TMerakOrbisCom(TI2CInterface* i2c) : mI2C(i2c) {
}

TMerakOrbisCom::~TMerakOrbisCom() {
  if (mTransport != nullptr) {
    Close();
  }
}

MerakResult TMerakOrbisCom::Open(int index, bool shortTimeouts) {
  mTransport.reset();
  mSilent = false;
  mPatience = shortTimeouts ? ReplyWatch::Patience::kShort : ReplyWatch::Patience::kLong;
  if (index == 0) {
    auto i2c = std::make_unique<TMerakControlI2C>(mI2C);
    if (i2c->IsAvailable()) {
      mTransport = std::move(i2c);
      return merak::kSuccess;
    }
  }
  Trace("OPN+ Device : " + std::to_string(index));
  auto usb = std::make_unique<TMerakControlUSB>();
  if (!usb->IsAvailable()) {
    return merak::kUnknownError;
  }
  if (const TMerakControl::Status status = usb->Open(index); status != FT_OK) {
    Trace("OPN- Err : " + std::to_string(status));
    return TMerakControl::TranslateError(status);
  }
  if (!usb->Remark().empty()) {
    Trace(usb->Remark());
  }
  mTransport = std::move(usb);
  SetTimeouts(mPatience);
  for (const unsigned int mask : kPurgeMasks) {
    mTransport->Purge(mask);
  }
  Trace("OPN- OK");
  Command(kGreeting);
  return merak::kSuccess;
}

MerakResult TMerakOrbisCom::Close() {
  if (mTransport == nullptr) {
    return merak::kDeviceNotOpen;
  }
  Trace("CLS+");
  const TMerakControl::Status status = mTransport->Close();
  mTransport.reset();
  Trace(status != FT_OK ? "CLS- Err : " + std::to_string(status) : std::string("CLS- Ok"));
  return TMerakControl::TranslateError(status);
}

MerakResult TMerakOrbisCom::RestoreLongTimeouts() {
  return SetTimeouts(ReplyWatch::Patience::kLong);
}

void TMerakOrbisCom::HurryIfSilent() {
  if (mSilent) {
    SetTimeouts(ReplyWatch::Patience::kShort);
  }
}

MerakResult TMerakOrbisCom::SetTimeouts(ReplyWatch::Patience patience) {
  mPatience = patience;
  if (mTransport != nullptr) {
    const corvane::TransportTimeouts& timeouts = TimeoutsOf(patience);
    mTransport->SetTimeouts(timeouts.readMs, timeouts.writeMs);
  }
  return merak::kSuccess;
}

MerakResult TMerakOrbisCom::GetDeviceCount(int& count) {
  Trace("CNT+ ");
  unsigned int devices = 0;
  const TMerakControl::Status status = TMerakControlUSB().ListDevices(&devices, nullptr, FT_LIST_NUMBER_ONLY);
  if (status != FT_OK) {
    Trace("CNT- Err : " + std::to_string(status));
    return TMerakControl::TranslateError(status);
  }
  if (TMerakControlI2C(mI2C).IsAvailable()) {
    ++devices;
  }
  count = static_cast<int>(devices);
  Trace("CNT- Count : " + std::to_string(count));
  return merak::kSuccess;
}

bool TMerakOrbisCom::IsAvailable() {
  return Command(kGreeting) == merak::kSuccess;
}

MerakResult TMerakOrbisCom::Command(const std::string& word, const std::string& params) {
  if (const MerakResult result = Send("C+ ", AddParamsToCommand(word, params), "C="); result != merak::kSuccess) {
    return result;
  }
  std::string reply;
  const MerakResult result = GetResponse(reply);
  TraceDone("C-", reply);
  return result;
}

void TMerakOrbisCom::Bid(const std::string& word) {
  if (mSilent) {
    Send("C+ ", AddParamsToCommand(word, {}), "C=");
  } else {
    Command(word);
  }
}

MerakResult TMerakOrbisCom::Query(const std::string& word, const std::string& params, std::string& reply) {
  const std::string line = AddParamsToCommand(word + "?", params);
  if (const MerakResult result = Send("Q+ ", line, "Q="); result != merak::kSuccess) {
    return result;
  }
  MerakResult result = merak::kSuccess;
  for (int attempt = 0; attempt < kEchoAttempts; ++attempt) {
    result = GetResponse(reply);
    // A spoilt reply may begin with the word and still have a wrong length or value behind it.
    if (result != merak::kSuccess || (!mSpoilt && StartsWithWord(reply, word))) {
      break;
    }
    reply.clear();
  }
  TraceDone("Q=", reply);
  // The echo is the line without its carriage return. A reply that is nothing but an echo stays.
  const std::size_t echoLength = line.size() - 1;
  if (reply.size() > echoLength) {
    reply.erase(0, echoLength);
  }
  return result;
}

MerakResult TMerakOrbisCom::Basic(const std::string& text, std::string& reply) {
  Trace("B+");
  if (const MerakResult result = Send("B+ ", text + kLineEnd, "B="); result != merak::kSuccess) {
    return result;
  }
  const MerakResult result = GetResponse(reply);
  reply += kLineEnd;
  TraceDone("B-", reply);
  return result;
}

MerakResult TMerakOrbisCom::Send(const char* begin, const std::string& line, const char* failure) {
  if (mTransport == nullptr) {
    return merak::kDeviceNotOpen;
  }
  Trace(begin + line);
  mSilent = false;
  mSent = corvane::MonotonicMilliseconds();
  const MerakResult result = mTransport->WriteString(line);
  if (result != merak::kSuccess) {
    // A line that could not be delivered within its time-out met silence; one refused at once did not.
    mSilent = corvane::MonotonicMilliseconds() - mSent >= TimeoutsOf(mPatience).writeMs;
    Trace(failure);
  }
  return result;
}

MerakResult TMerakOrbisCom::GetResponse(std::string& reply) {
  ReplyWatch watch(mPatience);
  const MerakResult result = mTransport->GetResponse(reply, watch);
  mSilent = watch.GaveUp();
  mSpoilt = watch.HadPause();
  mDone = corvane::MonotonicMilliseconds();
  return result;
}

std::string TMerakOrbisCom::AddParamsToCommand(const std::string& word, const std::string& params) {
  return params.empty() ? word + kLineEnd : word + " " + params + kLineEnd;
}

std::string TMerakOrbisCom::ToUpper(const std::string& text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](char c) { return std::toupper(c, std::locale::classic()); });
  return upper;
}

void TMerakOrbisCom::Trace(const std::string& line) const {
  if (mTrace) {
    OutputDebugString(line.c_str());
  }
}

void TMerakOrbisCom::TraceDone(const char* mark, const std::string& text) const {
  if (!mTrace) {
    return;
  }
  const unsigned long long elapsed = mDone - mSent;
  // The fraction is not padded: 1005 ms reads "1.5".
  Trace("Took " + std::to_string(elapsed / 1000) + "." + std::to_string(elapsed % 1000) + " seconds");
  Trace(mark + text);
}
