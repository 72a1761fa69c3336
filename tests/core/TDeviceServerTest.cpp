#include "core/TDeviceServer.h"

#include <gtest/gtest.h>

#include <string>

#include "core/TSpectrographHardware.h"

namespace {

/// Adds its name to a log, and disconnects itself then if it is told to.
class Recorder : public TDeviceClient {
 public:
  Recorder(std::string& log, char name, bool leaves = false) : mLog(log), mName(name), mLeaves(leaves) {}
  void OnStateChanged(TDeviceServer* server) override {
    mLog += mName;
    if (mLeaves) {
      server->Disconnect(this);
    }
  }

 private:
  std::string& mLog;
  char mName;
  bool mLeaves;
};

TEST(TDeviceServer, NotifiesInOrderOfConnectionAndTwiceWhenConnectedTwice) {
  std::string log;
  Recorder a(log, 'a');
  Recorder b(log, 'b');
  TBusyDeviceServer server;
  for (TDeviceClient* const client : {&a, &b, &a}) {
    server.Connect(client);
  }
  server.StateChanged();
  EXPECT_EQ(log, "aba");
  server.Disconnect(&a);
  server.Disconnect(nullptr);
  server.SetBusy(false);
  EXPECT_EQ(log, "ababa") << "only the first entry goes, and a flag that keeps its value is told of";
}

TEST(TDeviceServer, ClientThatDisconnectsInsideTheNotificationDoesNoHarm) {
  std::string log;
  Recorder leaver(log, 'l', true);
  TDeviceServer server;
  server.Connect(&leaver);
  server.Connect(&leaver);
  server.StateChanged();
  server.StateChanged();
  EXPECT_LE(log.size(), 2U);
}

TEST(TDeviceServer, CapCountsConnectionsNotClients) {
  std::string log;
  Recorder client(log, 'c');
  TDeviceServer server;
  for (int i = 0; i < 32; ++i) {
    server.Connect(&client);
    server.Disconnect(&client);
  }
  server.Connect(&client);
  server.StateChanged();
  EXPECT_EQ(log, "") << "the 33rd connection is refused although every client left";
}

class EmptyHardware : public TSpectrographHardware {
 public:
  EmptyHardware() { mSerial = {'C', 'V', '1'}; }
  void Initialise() override {}
};

TEST(TSpectrographHardware, AnswersWithinItsBounds) {
  const EmptyHardware hardware;
  std::string out(60, '#');
  hardware.GetSerialNumber(out.data(), 1000);
  EXPECT_EQ(out, std::string("CV1") + std::string(47, '\0') + std::string(10, '#')) << "the whole buffer, no byte more";
  EXPECT_EQ(hardware.GetSlitInterface(static_cast<ISpectrographSlit::TSlitPosition>(-1)), nullptr);
}

}  // namespace
