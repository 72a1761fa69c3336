// The place where a running camera acquisition would be paused around a hardware call. This library has no camera
// acquisition of its own, so the operations do nothing; components make the calls all the same, through
// TAcquisitionPause, so that the order pause - busy - move - idle - resume stands in the code.
#pragma once

class TCVNAcquisitionAborter {
 public:
  explicit TCVNAcquisitionAborter(bool /*unused*/) {}
  void AbortIfRunning() {}
  void RestartIfAborted() {}
};

/// Pauses a running acquisition for its lifetime.
class TAcquisitionPause {
 public:
  explicit TAcquisitionPause(TCVNAcquisitionAborter& aborter) : mAborter(aborter) { mAborter.AbortIfRunning(); }
  ~TAcquisitionPause() { mAborter.RestartIfAborted(); }
  TAcquisitionPause(const TAcquisitionPause&) = delete;
  TAcquisitionPause& operator=(const TAcquisitionPause&) = delete;

 private:
  TCVNAcquisitionAborter& mAborter;
};
