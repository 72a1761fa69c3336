#include "core/TDeviceServer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

class Recorder : public TDeviceClient {
 public:
  explicit Recorder(std::string& log, char name) : mLog(log), mName(name) {}
  void OnStateChanged(TDeviceServer* server) override {
    mLog += mName;
    mServer = server;
  }
  TDeviceServer* LastServer() const { return mServer; }

 private:
  std::string& mLog;
  char mName;
  TDeviceServer* mServer = nullptr;
};

TEST(TDeviceServer, NotifiesInOrderOfConnectionAndTwiceWhenConnectedTwice) {
  std::string log;
  Recorder a(log, 'a');
  Recorder b(log, 'b');
  TDeviceServer server;
  server.Connect(&a);
  server.Connect(&b);
  server.Connect(&a);
  server.StateChanged();
  EXPECT_EQ(log, "aba");
  EXPECT_EQ(a.LastServer(), &server);

  log.clear();
  server.Disconnect(&a);
  server.StateChanged();
  EXPECT_EQ(log, "ba") << "only the first entry goes";

  log.clear();
  Recorder stranger(log, 'x');
  server.Disconnect(&stranger);
  server.StateChanged();
  EXPECT_EQ(log, "ba");
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

  TDeviceServer almostFull(5, 4);
  almostFull.Connect(&client);
  almostFull.Connect(&client);
  almostFull.StateChanged();
  EXPECT_EQ(log, "c");
}

TEST(TBusyDeviceServer, NotifiesEvenWhenTheFlagKeepsItsValue) {
  std::string log;
  Recorder client(log, 'c');
  TBusyDeviceServer server;
  EXPECT_FALSE(server.IsBusy());
  server.Connect(&client);
  server.SetBusy(false);
  EXPECT_EQ(log, "c");
  server.SetBusy(true);
  EXPECT_TRUE(server.IsBusy());
  EXPECT_EQ(log, "cc");
}

class Meddler : public TDeviceClient {
 public:
  explicit Meddler(std::function<void(TDeviceServer*)> act) : mAct(std::move(act)) {}
  void OnStateChanged(TDeviceServer* server) override { mAct(server); }

 private:
  std::function<void(TDeviceServer*)> mAct;
};

TEST(TDeviceServer, ClientThatDisconnectsInsideTheNotificationDoesNoHarm) {
  TDeviceServer server;
  Meddler* self = nullptr;
  Meddler meddler([&self](TDeviceServer* changed) { changed->Disconnect(self); });
  self = &meddler;
  server.Connect(&meddler);
  server.Connect(&meddler);
  server.StateChanged();
  server.StateChanged();
}

}  // namespace
