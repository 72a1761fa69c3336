// A spectrograph that writes down what the exported functions ask of it, and fails where it is told to. And the seam by
// which a test puts one behind them: the list of instruments that this program links instead of the library's own.
#pragma once

#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "core/TCorvaneException.h"
#include "core/TSpectrographHardware.h"

/// What every recorded part shares.
struct Record {
  std::vector<std::string> calls;
  /// Operations that throw, by the name they are recorded under.
  std::set<std::string> failing;

  template <typename... Arguments>
  void Call(const std::string& name, Arguments... arguments) {
    std::ostringstream text;
    text << name;
    ((text << ' ' << arguments), ...);
    calls.push_back(text.str());
    if (failing.count(name) != 0) {
      throw TCorvaneException(7);
    }
  }
};

class RecordingSlit final : public ISpectrographSlit {
 public:
  RecordingSlit(Record& record, int position) : mRecord(record), mName("slit" + std::to_string(position)) {}
  void SetSlit(float width) override { mRecord.Call(mName + ".SetSlit", width); }
  float GetSlit() override { return mRecord.Call(mName + ".GetSlit"), 125.0F; }
  void SetSlitMode(const char*) override {}
  const char* GetSlitMode() override { return mRecord.Call(mName + ".GetSlitMode"), mode; }
  void Reset() override { mRecord.Call(mName + ".Reset"); }
  void UnsafeReset() override { mRecord.Call(mName + ".UnsafeReset"); }
  int GetSlitStep() override { return -999999; }

  const char* mode = "SLIT";

 private:
  Record& mRecord;
  std::string mName;
};

class RecordingFlipper final : public ISpectrographFlipper {
 public:
  RecordingFlipper(Record& record, int position) : mRecord(record), mName("flipper" + std::to_string(position)) {}
  int GetPort() override { return mRecord.Call(mName + ".GetPort"), 1; }
  void SetFlipperPort(TPortPosition port) override { mRecord.Call(mName + ".SetFlipperPort", static_cast<int>(port)); }
  void Reset() override { mRecord.Call(mName + ".Reset"); }
  bool GetCCDLimits(TPortPosition port, float& low, float& high) override {
    mRecord.Call(mName + ".GetCCDLimits", static_cast<int>(port));
    low = 180.0F;
    high = 1000.0F;
    return true;
  }

 private:
  Record& mRecord;
  std::string mName;
};

class RecordingFilter final : public ISpectrographFilter {
 public:
  explicit RecordingFilter(Record& record) : mRecord(record) {}
  void SetFilter(int filter) override { mRecord.Call("filter.SetFilter", filter); }
  int GetFilter() override { return mRecord.Call("filter.GetFilter"), 4; }
  void Reset() override { mRecord.Call("filter.Reset"); }
  void GetFilterInfo(int filter, char* text, int maxLength) override {
    mRecord.Call("filter.GetFilterInfo", filter, maxLength);
    std::memset(text, 'x', static_cast<std::size_t>(maxLength));
  }
  void SetFilterInfo(int filter, const char* text) override { mRecord.Call("filter.SetFilterInfo", filter, text); }

 private:
  Record& mRecord;
};

class RecordingFocusMirror final : public ISpectrographFocusMirror {
 public:
  explicit RecordingFocusMirror(Record& record) : mRecord(record) {}
  void SetMirrorFocus(int steps) override { mRecord.Call("focus.SetMirrorFocus", steps); }
  int GetMirrorFocus() override { return mRecord.Call("focus.GetMirrorFocus"), position; }
  int GetFocusMirrorMaxSteps() override { return mRecord.Call("focus.GetFocusMirrorMaxSteps"), maximum; }
  void Reset() override { mRecord.Call("focus.Reset"); }
  bool FocusMirrorAutoFocus() override { return false; }
  bool FocusMirrorCancelAutoFocus() override { return false; }

  int position = 300;
  int maximum = 1000;

 private:
  Record& mRecord;
};

class RecordingAccessory final : public ISpectrographAccessory {
 public:
  explicit RecordingAccessory(Record& record) : mRecord(record) {}
  void SetAccessory(int line, bool state) override { mRecord.Call("accessory.SetAccessory", line, state); }
  bool GetAccessoryState(int line) override { return mRecord.Call("accessory.GetAccessoryState", line), true; }

 private:
  Record& mRecord;
};

class RecordingShutter final : public ISpectrographShutter {
 public:
  explicit RecordingShutter(Record& record) : mRecord(record) {}
  void SetExternalShutter(int mode) override { mRecord.Call("shutter.SetExternalShutter", mode); }
  int GetExternalShutter() override { return mRecord.Call("shutter.GetExternalShutter"), 1; }
  bool IsExternalModePossible(int mode) override { return mRecord.Call("shutter.IsExternalModePossible", mode), true; }
  void SetInternalShutter(int) override {}
  int GetInternalShutter() override { return 0; }
  bool InternalShutterAvailable() override { return false; }
  void LoadShutterValues() override { mRecord.Call("shutter.LoadShutterValues"); }
  void ExternalChange() override { mRecord.Call("shutter.ExternalChange"); }

 private:
  Record& mRecord;
};

class RecordingGrating final : public ISpectrographGrating {
 public:
  explicit RecordingGrating(Record& record) : mRecord(record) {}
  void SetGrating(int grating) override { mRecord.Call("grating.SetGrating", grating); }
  int GetGrating() override { return mRecord.Call("grating.GetGrating"), 1; }
  void Reset() override { mRecord.Call("grating.Reset"); }
  void UnsafeReset() override { mRecord.Call("grating.UnsafeReset"); }
  int GetNumberGratings() override { return mRecord.Call("grating.GetNumberGratings"), 3; }
  void GetGratingInfo(int grating, float& lines, const char*& blaze, float& home, float& offset) override {
    mRecord.Call("grating.GetGratingInfo", grating);
    lines = 1200.0F;
    blaze = blazeText;
    home = homeSteps;
    offset = -2.9F;
  }
  void SetDetectorOffset(int entrance, int exit, int offset) override {
    mRecord.Call("grating.SetDetectorOffset", entrance, exit, offset);
  }
  int GetDetectorOffset(int entrance, int exit) override {
    return mRecord.Call("grating.GetDetectorOffset", entrance, exit), 55;
  }
  void SetDetectorOffset(int) override {}
  int GetDetectorOffset() override { return 0; }
  void SetGratingOffset(int grating, int offset) override { mRecord.Call("grating.SetGratingOffset", grating, offset); }
  int GetGratingOffset(int grating) override { return mRecord.Call("grating.GetGratingOffset", grating), 66; }
  void GratingOffsetAutoAdjust() override {}
  void GratingOffsetCancelAutoAdjust() override {}
  void SetTurret(int turret) override { mRecord.Call("grating.SetTurret", turret); }
  int GetTurret() override { return mRecord.Call("grating.GetTurret"), 1; }

  const char* blazeText = "500";
  float homeSteps = 7.9F;

 private:
  Record& mRecord;
};

class RecordingHardware final : public TSpectrographHardware {
 public:
  explicit RecordingHardware(Record& record);
  void Initialise() override { mRecord.Call("Initialise"); }

  RecordingSlit& Slit(int position) { return static_cast<RecordingSlit&>(*mSlit[static_cast<std::size_t>(position)]); }
  RecordingFocusMirror& FocusMirror() { return static_cast<RecordingFocusMirror&>(*mFocusMirror); }
  RecordingGrating& Grating() { return static_cast<RecordingGrating&>(*mGrating); }

 private:
  Record& mRecord;
};

inline RecordingHardware::RecordingHardware(Record& record) : mRecord(record) {
  for (int i = 0; i < ISpectrographSlit::kPositions; ++i) {
    mSlit[static_cast<std::size_t>(i)] = std::make_unique<RecordingSlit>(record, i);
  }
  for (int i = 0; i < ISpectrographFlipper::kPositions; ++i) {
    mFlipper[static_cast<std::size_t>(i)] = std::make_unique<RecordingFlipper>(record, i);
  }
  mFilter = std::make_unique<RecordingFilter>(record);
  mFocusMirror = std::make_unique<RecordingFocusMirror>(record);
  mAccessory = std::make_unique<RecordingAccessory>(record);
  mShutter = std::make_unique<RecordingShutter>(record);
  mGrating = std::make_unique<RecordingGrating>(record);
}

/// What the search for instruments finds; what it throws, CorvaneInitialize meets.
using Search = std::function<std::vector<std::unique_ptr<TSpectrographHardware>>()>;
void SetSearch(Search search);
