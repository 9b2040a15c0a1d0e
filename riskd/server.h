// The risk server: answers framed kdl requests on a loopback TCP port, on a
// thread of its own, until stopped. Qt-free, so a host can run it
// in-process as well as through the tarn-riskd executable.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "riskd/setup.h"

namespace riskd {

struct RiskServerOptions {
  StoreSetup store;
  // Without auth every connection names its user in a greeting and is
  // believed, so the server listens on loopback (127.0.0.0/8) only. With
  // auth each connection logs in with a password and is answered as that
  // user whatever its requests name; any address may then be given.
  bool auth = false;
  std::string host = "127.0.0.1"; // an IPv4 address
  uint16_t port = 0;              // 0: any free port (see RiskServer::port)
  // Last prices stay put (see ScripBook::Load), so answers can be checked
  // against the store.
  bool frozenPrices = false;
  std::chrono::milliseconds priceInterval{1000};
  std::chrono::milliseconds presentInterval{5000};
  uint32_t maxFrame = 1u << 20;                      // larger requests close the connection
  size_t maxQueuedBytes = 8u << 20;                  // a connection further behind is closed
  size_t maxQueuedAnswers = 64;                      // requests waiting for their answer
  size_t maxConnections = 256;                       // further ones are accepted and closed at once
  LogFn log = LogToStderr;                           // called on the server thread (and by Start)
  std::chrono::milliseconds refusedLoginDelay{1000}; // before a refused login is answered
  std::chrono::milliseconds loginTimeout{10000};     // a connection not logged in is closed
};

class Loop;

class RiskServer {
public:
  // Sets up the store (RiskServerOptions::store), listens and starts the
  // server thread. nullptr with *error set when any of it fails, and when
  // `host` is not a loopback address without `auth`.
  static std::unique_ptr<RiskServer> Start(const RiskServerOptions& options, std::string* error);
  ~RiskServer(); // Stop()s

  RiskServer(const RiskServer&) = delete;
  RiskServer& operator=(const RiskServer&) = delete;

  uint16_t port() const { return port_; }
  // Closes every connection and joins the thread. Idempotent.
  void Stop();

private:
  RiskServer() = default;
  std::unique_ptr<Loop> loop_;
  std::thread thread_;
  uint16_t port_ = 0;
};

} // namespace riskd
