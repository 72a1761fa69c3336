#include <iostream>
#include <nlohmann/json.hpp>

#include "Advice.h"
#include "Commands.h"
#include "Failure.h"
#include "Output.h"
#include "Session.h"

namespace {

/// A device that is listed but does not answer has no gratings.
bool Answers(int device, int& gratings) {
  return CorvaneGetNumberGratings(device, &gratings) == CORVANE_SUCCESS && gratings > 0;
}

}  // namespace

void RunList(const Options& options) {
  const Session session(options);
  if (session.NumberDevices() == 0) {
    throw Failure(ExitCode::kNotFound, "no instrument found", AdviceForNothingFound(session.Simulated()));
  }
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows{{"device", "serial", "gratings", "state"}};
  bool allAnswer = true;
  for (int device = 0; device < session.NumberDevices(); ++device) {
    int gratings = 0;
    const bool answers = Answers(device, gratings);
    allAnswer = allAnswer && answers;
    list.push_back(
        {{"device", device}, {"serial", SerialNumber(device)}, {"gratings", gratings}, {"answers", answers}});
    rows.push_back({std::to_string(device), SerialNumber(device), std::to_string(gratings),
                    answers ? "ready" : "does not answer"});
  }
  if (session.Json()) {
    Print(list);
  } else {
    PrintTable(rows);
  }
  if (!allAnswer) {
    std::cerr << "corvane: an instrument that does not answer is switched off, held by another program, or not a "
                 "spectrograph behind that USB bridge\n";
  }
}
