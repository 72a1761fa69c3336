// The place where a running camera acquisition would be paused around a hardware call. This library has no camera
// acquisition of its own, so the operations do nothing; components make the calls all the same, through
// AcquisitionPause, so that the order pause - busy - move - idle - resume stands in the code.
#pragma once

class TCVNAcquisitionAborter {
 public:
  explicit TCVNAcquisitionAborter(bool /*unused*/) {}
  void AbortIfRunning() {}
  void RestartIfAborted() {}
};

namespace corvane {

/// Pauses a running acquisition for its lifetime.
class AcquisitionPause {
 public:
  explicit AcquisitionPause(TCVNAcquisitionAborter& aborter) : mAborter(aborter) { mAborter.AbortIfRunning(); }
  ~AcquisitionPause() { mAborter.RestartIfAborted(); }
  AcquisitionPause(const AcquisitionPause&) = delete;
  AcquisitionPause& operator=(const AcquisitionPause&) = delete;

 private:
  TCVNAcquisitionAborter& mAborter;
};

}  // namespace corvane
