// A simulated motion controller, seen through its serial line: assembles command lines, carries them out on the
// instrument, and gives replies back when they are due. Carriers (the simulated camera SDK's I2C address, a virtual
// USB bridge chip) use it as ISerialPeer. It waits nowhere: a motion only makes its reply due later.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "controller/CommandSet.h"
#include "controller/ControllerInstrument.h"
#include "model/ISerialPeer.h"
#include "model/InstrumentDescription.h"
#include "model/SimulationClock.h"
#include "model/SimulationLog.h"

namespace corvane::sim {

class MotionController : public ISerialPeer {
 public:
  /// log is borrowed and must outlive the controller; null for none. name stands in front of its log lines. Throws
  /// std::runtime_error when the description's state file exists but does not fit.
  explicit MotionController(const InstrumentDescription& description, SimulationLog* log = nullptr,
                            std::string name = "controller", SimulationClock clock = SystemClock());

  void FromHost(std::span<const std::uint8_t> bytes) override;
  std::size_t ToHost(std::span<std::uint8_t> buffer) override;

  /// Time until the next output byte is due: 0 when one waits, none when no output is coming.
  std::optional<SimulationTime> UntilOutput() const;

  void Arm(const ReplyFault& fault);
  void ClearFaults();

  /// How many lines a fault has disturbed since the start.
  int FaultHits() const { return mFaultHits; }
  /// Lines received since the start, without their carriage returns; the last hundred thousand of them at least.
  const std::vector<std::string>& Lines() const { return mLines; }
  unsigned long long LineCount() const { return mLineCount; }
  /// Where everything stands, as a JSON object; docs/simulation.md has its keys.
  std::string State() const;
  /// The instrument itself: where its turret really stands, what its memory holds.
  const ControllerInstrument& GetInstrument() const { return mInstrument; }

 private:
  struct ArmedFault {
    ReplyFault fault;
    int seen = 0;
  };
  struct OutputByte {
    std::uint8_t value;
    SimulationTime due;
  };

  void CarryOut(const std::string& line);
  std::vector<ReplyFault> FaultsFor(const std::string& line);
  /// The bytes of a reply as the faults leave it.
  std::string Disturbed(const std::string& line, Reply reply, const std::vector<ReplyFault>& faults) const;
  void Send(const std::string& reply, SimulationTime due, const std::vector<ReplyFault>& faults);

  ControllerInstrument mInstrument;
  SimulationLog* mLog;
  std::string mName;
  SimulationClock mClock;
  std::string mPartialLine;
  std::vector<std::string> mLines;
  unsigned long long mLineCount = 0;
  std::vector<ArmedFault> mFaults;
  std::deque<OutputByte> mOutput;
  std::string mPreviousReply;
  SimulationTime mBusyUntil{0};
  int mFaultHits = 0;
};

}  // namespace corvane::sim
