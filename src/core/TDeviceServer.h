// The observable base of every component (TDeviceServer), the base of components that move (TBusyDeviceServer), and
// their observer (TDeviceClient). Nothing here is locked; notifications run on the thread that changed the state.
#pragma once

#include <vector>

class TDeviceServer;

/// Observer of components. The hook for applications and higher layers.
class TDeviceClient {
 public:
  /// The component's state changed. Must not connect or disconnect clients of that component.
  virtual void OnStateChanged(TDeviceServer* server) = 0;
  virtual ~TDeviceClient() = default;
};

class TDeviceServer {
 public:
  static constexpr int kDefaultMaximumClients = 32;

  TDeviceServer() = default;
  /// maximumClients: cap on Connect calls over the component's life; connectionCount: calls already counted.
  TDeviceServer(int maximumClients, int connectionCount);
  TDeviceServer(const TDeviceServer&) = delete;
  TDeviceServer& operator=(const TDeviceServer&) = delete;
  /// Clients are neither notified nor deleted.
  virtual ~TDeviceServer() = default;

  /// Appends a borrowed client (duplicates allowed). Does nothing once the cap on connections is reached.
  virtual void Connect(TDeviceClient* client);
  /// Removes the first entry equal to the pointer, if any. Does not give the connection back: the cap limits the
  /// number of Connect calls, not the number of current clients.
  virtual void Disconnect(TDeviceClient* client);
  /// Notifies every client in order of connection.
  virtual void StateChanged();
  /// Whether the part is fitted; true unless a component knows better.
  virtual bool IsPresent();

 private:
  int mMaximumClients = kDefaultMaximumClients;
  int mConnectionCount = 0;
  std::vector<TDeviceClient*> mClients;
};

class TBusyDeviceServer : public TDeviceServer {
 public:
  using TDeviceServer::TDeviceServer;

  virtual bool IsBusy();
  /// Stores the flag and notifies the clients, whether or not the value changed.
  virtual void SetBusy(bool busy);

 private:
  bool mBusy = false;
};
