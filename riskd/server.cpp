#include "riskd/server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "riskd/connection.h"
#include "riskd/password_checker.h"
#include "riskd/passwords.h"
#include "riskd/scrip_book.h"

namespace riskd {
namespace {

using Clock = std::chrono::steady_clock;
// Answers are produced until this much waits per connection: enough to keep
// the socket busy, small enough that a million-row answer stays in SQLite.
constexpr size_t kLowWater = 256 * 1024;
constexpr int kMaxAcceptsPerTurn = 64;
// Logins whose passwords wait to be checked; more are refused at once.
constexpr size_t kMaxLoginsChecking = 16;

bool SetNonBlocking(int fd) {
  const int flags = fcntl(fd, F_GETFL, 0);
  return flags >= 0 && fcntl(fd, F_SETFL, flags | O_NONBLOCK) == 0;
}

int Listen(const std::string& host, uint16_t port, uint16_t* bound, std::string* error) {
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(port);
  if (inet_pton(AF_INET, host.c_str(), &addr.sin_addr) != 1) {
    *error = "not an IPv4 address: " + host;
    return -1;
  }
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int one = 1;
  socklen_t len = sizeof addr;
  if (fd < 0 || setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one) != 0 ||
      bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 || listen(fd, 128) != 0 ||
      !SetNonBlocking(fd) || getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    *error = "cannot listen on " + host + ":" + std::to_string(port) + ": " + std::strerror(errno);
    if (fd >= 0)
      close(fd);
    return -1;
  }
  *bound = ntohs(addr.sin_port);
  return fd;
}

bool IsLoopback(const std::string& host) {
  in_addr addr{};
  return inet_pton(AF_INET, host.c_str(), &addr) == 1 && (ntohl(addr.s_addr) >> 24) == 127;
}

} // namespace

// The server thread's state; only that thread touches it after Start.
class Loop {
public:
  Loop(RiskServerOptions options, Db db)
      : options_(std::move(options)),
        db_(std::move(db)), services_{db_, options_.store.dbPath, book_, options_.log, {}} {}
  ~Loop() {
    checker_.reset();
    for (int fd : {listenFd_, wakeRead_, wakeWrite_})
      if (fd >= 0)
        close(fd);
  }

  bool Init(std::string* error, uint16_t* port) {
    int pipeFds[2];
    if (!book_.Load(db_, error, options_.frozenPrices))
      return false;
    if (pipe2(pipeFds, O_CLOEXEC | O_NONBLOCK) != 0) {
      *error = std::string("pipe: ") + std::strerror(errno);
      return false;
    }
    wakeRead_ = pipeFds[0];
    wakeWrite_ = pipeFds[1];
    checker_ = std::make_unique<PasswordChecker>([this] { Poke(); }, kMaxLoginsChecking);
    listenFd_ = Listen(options_.host, options_.port, port, error);
    return listenFd_ >= 0;
  }

  void Wake() {
    stop_ = true;
    Poke();
  }
  // Makes the loop's poll return; safe from any thread.
  void Poke() {
    const char byte = 1;
    (void)!write(wakeWrite_, &byte, 1);
  }

  void Run();

private:
  void Accept();
  void HandleFrames(Connection& c);
  void Login(Connection& c, const kdl::Message& request);
  void Refuse(Connection& c, const std::string& id);
  void Admit(Connection& c, User user);
  void CheckedPasswords();
  bool Service(Connection& c, short revents);
  void Timers(Clock::time_point now);
  int TimeoutMs(Clock::time_point now) const;

  RiskServerOptions options_;
  Db db_;
  ScripBook book_;
  Services services_;
  int listenFd_ = -1, wakeRead_ = -1, wakeWrite_ = -1;
  std::atomic<bool> stop_{false};
  std::vector<std::unique_ptr<Connection>> conns_;
  uint64_t nextId_ = 1;
  Clock::time_point nextPrice_ = Clock::now(), nextPresent_ = Clock::now();
  Clock::time_point acceptPausedUntil_;
  // Made by Init, ended first by the destructor: its thread pokes the loop.
  std::unique_ptr<PasswordChecker> checker_;
  std::unordered_map<uint64_t, User> checking_; // by connection id
};

void Loop::Run() {
  options_.log("listening");
  std::vector<pollfd> fds;
  while (!stop_) {
    fds.clear();
    fds.push_back({wakeRead_, POLLIN, 0});
    const bool accepting = Clock::now() >= acceptPausedUntil_;
    fds.push_back({accepting ? listenFd_ : -1, POLLIN, 0});
    for (const auto& c : conns_)
      fds.push_back(
          {c->fd(),
           static_cast<short>(POLLIN | (c->queuedBytes() || c->queuedAnswers() ? POLLOUT : 0)), 0});
    if (poll(fds.data(), fds.size(), TimeoutMs(Clock::now())) < 0 && errno != EINTR) {
      options_.log(std::string("poll: ") + std::strerror(errno));
      break;
    }
    if (stop_)
      break;
    if (fds[0].revents & POLLIN) {
      char drain[64];
      while (read(wakeRead_, drain, sizeof drain) > 0) {
      }
      CheckedPasswords();
    }
    if (fds[1].revents & POLLIN)
      Accept();
    // Connections accepted just now have no pollfd yet; they start next turn.
    std::vector<std::unique_ptr<Connection>> keep;
    for (size_t i = 0; i < conns_.size(); ++i) {
      const short revents = i + 2 < fds.size() ? fds[i + 2].revents : 0;
      if (Service(*conns_[i], revents))
        keep.push_back(std::move(conns_[i]));
    }
    conns_ = std::move(keep);
    Timers(Clock::now());
  }
  conns_.clear();
  options_.log("stopped");
}

void Loop::Accept() {
  for (int n = 0; n < kMaxAcceptsPerTurn; ++n) {
    const int fd = accept4(listenFd_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
      // Out of descriptors: the listener stays readable, so stop polling it
      // for a moment instead of spinning.
      if (errno == EMFILE || errno == ENFILE)
        acceptPausedUntil_ = Clock::now() + std::chrono::milliseconds(200);
      return;
    }
    if (conns_.size() >= options_.maxConnections) {
      options_.log("more than " + std::to_string(options_.maxConnections) +
                   " connections; a new one was closed");
      close(fd);
      continue;
    }
    conns_.push_back(std::make_unique<Connection>(fd, nextId_++, options_.maxFrame,
                                                  Clock::now() + options_.loginTimeout));
  }
}

// Returns false when the connection is to be closed.
bool Loop::Service(Connection& c, short revents) {
  const std::string who = "connection " + std::to_string(c.id());
  if (revents & (POLLIN | POLLHUP | POLLERR)) {
    const bool open = c.Read();
    HandleFrames(c); // what arrived before a close is still answered
    if (c.in().failed()) {
      options_.log(who + ": frame of " + std::to_string(c.in().oversizeLength()) +
                   " bytes exceeds " + std::to_string(options_.maxFrame) + "; closed");
      return false;
    }
    if (!open)
      return false;
    if (c.queuedAnswers() > options_.maxQueuedAnswers) {
      options_.log(who + ": more than " + std::to_string(options_.maxQueuedAnswers) +
                   " requests waiting; closed");
      return false;
    }
  }
  // Unnamed connections would otherwise hold places that desk users need.
  if (!c.user() && !c.refuseAt && !c.closing() && !c.checkingPassword &&
      Clock::now() >= c.loginBy()) {
    options_.log(who + ": no login within " + std::to_string(options_.loginTimeout.count()) +
                 " ms; closed");
    return false;
  }
  if (c.refuseAt && Clock::now() >= *c.refuseAt) {
    c.refuseAt.reset();
    c.Queue(StatusOnly(vh::kLoginRequest, vh::kLoginRefused));
    c.CloseWhenWritten();
  }
  // Well under the bound, so that only a reader that stopped reading hits it.
  c.Refill(std::min(kLowWater, options_.maxQueuedBytes / 4));
  if (c.queuedBytes() > options_.maxQueuedBytes) {
    options_.log(who + ": reader is " + std::to_string(c.queuedBytes()) + " bytes behind; closed");
    return false;
  }
  return c.Write() && !(c.closing() && c.written());
}

void Loop::HandleFrames(Connection& c) {
  std::string_view payload;
  // While a password is checked, what follows the login waits in the
  // splitter; once closing or waiting to refuse a login, nothing is read.
  while (!c.checkingPassword && c.in().Next(&payload)) {
    if (c.closing() || c.refuseAt)
      continue;
    KdlError err{};
    const auto request = kdl::Message::Parse(payload, &err);
    const std::string who = "connection " + std::to_string(c.id());
    if (!request) {
      options_.log(who + ": malformed message ignored (" + err.text + ")");
      continue;
    }
    if (request->Text(vh::kTagRequestName) == vh::kLoginRequest) {
      Login(c, *request);
      continue;
    }
    if (!c.user()) {
      options_.log(who + ": a request before the login; closed");
      c.CloseWhenWritten();
      continue;
    }
    Answers answers;
    const Caller caller{*c.user(), !options_.auth};
    if (!HandleRequest(services_, caller, *request, &c.subscription(), &answers)) {
      const auto name = request->Text(vh::kTagRequestName);
      options_.log(who + ": unknown request '" + std::string(name.value_or("<none>")) +
                   "' ignored");
      continue;
    }
    for (auto& a : answers)
      c.Queue(std::move(a));
  }
}

// Without --auth the greeting names the user and is believed; under --auth
// the password must match (checked on the checker's thread), and a refusal
// is answered only after a delay so that guessing is slow. A refused login
// closes the connection.
void Loop::Login(Connection& c, const kdl::Message& request) {
  const std::string who = "connection " + std::to_string(c.id());
  const std::string id = FieldText(request, vh::kTagUserId);
  if (c.user()) {
    options_.log(who + ": a second login; closed");
    c.CloseWhenWritten();
    return;
  }
  const auto user = id.empty() ? LoadDeskAdministrator(db_) : LoadUser(db_, id);
  if (options_.auth && !request.Count(vh::kTagPassword)) {
    c.Queue(StatusOnly(vh::kLoginRequest, vh::kPasswordNeeded));
    return;
  }
  if (!user) {
    Refuse(c, id);
    return;
  }
  if (!options_.auth) {
    Admit(c, *user);
    return;
  }
  std::string hash = PasswordHash(db_, user->id);
  const bool hashed = !hash.empty();
  if (!hashed || !checker_->Submit(c.id(), std::move(hash), FieldText(request, vh::kTagPassword))) {
    if (hashed)
      options_.log(who + ": too many logins waiting for their passwords to be checked");
    Refuse(c, id);
    return;
  }
  c.checkingPassword = true;
  checking_.emplace(c.id(), *user);
}

void Loop::Refuse(Connection& c, const std::string& id) {
  options_.log("connection " + std::to_string(c.id()) + ": login as '" + id + "' refused (" +
               (options_.auth ? "unknown user or wrong password" : "unknown user") + ")");
  if (options_.auth) {
    c.refuseAt = Clock::now() + options_.refusedLoginDelay;
  } else {
    c.Queue(StatusOnly(vh::kLoginRequest, vh::kLoginRefused));
    c.CloseWhenWritten();
  }
}

void Loop::Admit(Connection& c, User user) {
  options_.log("connection " + std::to_string(c.id()) + ": logged in as '" + user.id + "'");
  c.LogIn(std::move(user));
  c.Queue(StatusOnly(vh::kLoginRequest, vh::kLoginAccepted));
}

void Loop::CheckedPasswords() {
  for (const PasswordChecker::Result& r : checker_->Take()) {
    auto user = checking_.find(r.connection);
    if (user == checking_.end())
      continue;
    User u = std::move(user->second);
    checking_.erase(user);
    auto conn = std::find_if(conns_.begin(), conns_.end(),
                             [&](const auto& c) { return c->id() == r.connection; });
    if (conn == conns_.end())
      continue; // gone while its password was checked
    Connection& c = **conn;
    c.checkingPassword = false;
    if (r.accepted)
      Admit(c, std::move(u));
    else
      Refuse(c, u.id);
    HandleFrames(c); // what arrived meanwhile
  }
}

void Loop::Timers(Clock::time_point now) {
  if (now >= nextPrice_) {
    nextPrice_ = now + options_.priceInterval;
    const int64_t epoch = std::chrono::duration_cast<std::chrono::seconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count();
    std::vector<int64_t> ticked;
    for (auto& c : conns_) {
      if (!c->subscription().active())
        continue;
      for (int64_t id : c->subscription().scrips)
        ticked.push_back(id);
    }
    std::sort(ticked.begin(), ticked.end());
    ticked.erase(std::unique(ticked.begin(), ticked.end()), ticked.end());
    for (int64_t id : ticked)
      book_.Tick(id);
    for (auto& c : conns_)
      if (c->subscription().active())
        c->Push(PriceFrames(book_, c->subscription(), epoch));
  }
  if (now >= nextPresent_) {
    nextPresent_ = now + options_.presentInterval;
    for (auto& c : conns_)
      if (c->subscription().active())
        c->Queue(PresentValues(services_, c->subscription()));
  }
}

int Loop::TimeoutMs(Clock::time_point now) const {
  auto next = std::min(nextPrice_, nextPresent_);
  if (acceptPausedUntil_ > now)
    next = std::min(next, acceptPausedUntil_);
  for (const auto& c : conns_) {
    if (c->refuseAt)
      next = std::min(next, *c->refuseAt);
    if (!c->user())
      next = std::min(next, c->loginBy());
  }
  if (next <= now)
    return 0;
  return static_cast<int>(
      std::chrono::duration_cast<std::chrono::milliseconds>(next - now).count() + 1);
}

std::unique_ptr<RiskServer> RiskServer::Start(const RiskServerOptions& options,
                                              std::string* error) {
  if (!options.auth && !IsLoopback(options.host)) {
    *error = "without --auth tarn-riskd listens on loopback only (127.x.x.x), not on " +
             options.host + ": anyone who can reach it could name any user";
    return nullptr;
  }
  Db db;
  if (!SetUpStore(options.store, options.log, &db, error))
    return nullptr;
  if (options.auth && !AnyPasswordSet(db))
    options.log("--auth: no user has a password yet, so no one can log in; set one with"
                " tarn-riskd --db FILE --set-password USER");
  auto loop = std::make_unique<Loop>(options, std::move(db));
  std::unique_ptr<RiskServer> server(new RiskServer());
  if (!loop->Init(error, &server->port_))
    return nullptr;
  server->loop_ = std::move(loop);
  server->thread_ = std::thread([l = server->loop_.get()] { l->Run(); });
  return server;
}

RiskServer::~RiskServer() {
  Stop();
}

void RiskServer::Stop() {
  if (!thread_.joinable())
    return;
  loop_->Wake();
  thread_.join();
  loop_.reset();
}

} // namespace riskd
