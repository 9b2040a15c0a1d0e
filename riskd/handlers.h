// Request handlers: one request message in, zero or more answers out.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "kdl/message.h"
#include "riskd/answer.h"
#include "riskd/scrip_book.h"
#include "riskd/snapshot.h"
#include "riskd/sqlite.h"
#include "riskd/users.h"

namespace riskd {

struct Services {
  Db& db;                // the writer's connection
  std::string storePath; // streamed answers read their own snapshot of it
  ScripBook& book;
  std::function<void(const std::string&)> log;
  // Held quantity per "scrip|client|user", for the present-values timer: a
  // hot scrip's sum reads a million rows. Emptied when a transfer applies.
  std::unordered_map<std::string, int64_t> heldQuantity;
};

// What a connection watches after its last holdings query: the scrips whose
// prices and present values it is sent.
struct Subscription {
  static constexpr size_t kMaxScrips = 2000;
  std::vector<int64_t> scrips;
  std::string userId;
  std::string clientId; // set for a query by client
  bool active() const { return !scrips.empty(); }
};

using Answers = std::vector<std::unique_ptr<Answer>>;

// Who a request comes from: the user its connection logged in as, and
// whether a user id the request names is believed instead (on loopback
// without --auth; never under --auth).
struct Caller {
  const User& user;
  bool trustNamedUser = true;
};

// The user a request is answered for. Under --auth, the caller's user
// whatever the request names; otherwise the user named in `tag` (the first
// of `tag`, `fallbackTag` that is present and not empty), else the caller's
// user. nullopt when the named user is unknown.
std::optional<User> UserFor(const Services& s, const Caller& caller, const kdl::Message& req,
                            uint32_t tag, uint32_t fallbackTag = 0);

// Handles one parsed request. Returns false for a message that is no known
// request (no field 0, or an unknown name); nothing is then answered.
bool HandleRequest(Services& services, const Caller& caller, const kdl::Message& request,
                   Subscription* subscription, Answers* answers);

// The handlers behind HandleRequest, by request name.
void HandleHoldings(Services& s, const Caller& caller, const kdl::Message& req, Subscription* sub,
                    Answers* out);
void HandleTopTen(Services& s, const Caller& caller, const kdl::Message& req, Answers* out);
void HandleMarginTransfer(Services& s, const Caller& caller, const kdl::Message& req);

// One "mrv_master" tick for `sub`: a record per leg of each scrip, then the
// status record. `now` goes to 63179 (seconds since the epoch).
std::string PriceFrames(const ScripBook& book, const Subscription& sub, int64_t now);
// One "om_get_prsnt_values" answer for `sub`, built when it is first filled.
std::unique_ptr<Answer> PresentValues(Services& s, const Subscription& sub);

// A snapshot of the store for a streamed answer to `request`; nullptr, and
// the reason logged, when the store cannot be read.
std::shared_ptr<const Db> TakeSnapshot(Services& s, std::string_view request);

// Text of value 0 of `tag`, or empty.
std::string FieldText(const kdl::Message& msg, uint32_t tag, uint32_t index = 0);

} // namespace riskd
