#include "host/backend_control.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <algorithm>
#include <cstring>

#include "kdl/tags.h"

Q_LOGGING_CATEGORY(lcBackend, "tarntrader.backend")

namespace host {
namespace {

constexpr int kFirstBackoffMs = 200;
constexpr int kMaxBackoffMs = 5000;
// Messages delivered between looks at the slice's clock.
constexpr int kClockStride = 16;
// Bytes taken from the socket at a time, and the most Qt buffers for it.
constexpr qint64 kReadChunk = 256 * 1024;
constexpr qint64 kSocketBuffer = 1024 * 1024;

void setError(KdlError* err, int32_t code, const char* text) {
  if (!err)
    return;
  err->code = code;
  std::snprintf(err->text, sizeof err->text, "%s", text);
}

} // namespace

BackendControl::BackendControl(QObject* parent, size_t maxPending)
    : QObject(parent), maxPending_(maxPending) {
  reconnect_.setSingleShot(true);
  connect(&reconnect_, &QTimer::timeout, this, [this] {
    if (running_)
      socket_.connectToHost(host_, port_);
  });
  connect(&socket_, &QTcpSocket::connected, this, [this] {
    backoffMs_ = 0;
    ++connection_;
    inbox_ = kdl::FrameSplitter(kMaxFrame);
    socket_.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket_.setReadBufferSize(kSocketBuffer);
    qCInfo(lcBackend) << "connected to" << host_ << port_ << "; logging in";
    sendLogin(std::nullopt);
  });
  connect(&socket_, &QTcpSocket::disconnected, this, [this] {
    qCWarning(lcBackend) << "back-end connection lost";
    inbox_ = kdl::FrameSplitter(kMaxFrame);
    if (std::exchange(loggedIn_, false))
      emit connectedChanged(false);
    scheduleReconnect();
  });
  connect(&socket_, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError) {
    if (socket_.state() == QAbstractSocket::UnconnectedState)
      scheduleReconnect();
  });
  connect(&socket_, &QTcpSocket::readyRead, this, &BackendControl::onReadyRead);
}

BackendControl::~BackendControl() {
  Stop();
}

void BackendControl::Start(const QString& host, quint16 port) {
  host_ = host;
  port_ = port;
  running_ = true;
  socket_.connectToHost(host_, port_);
}

void BackendControl::Stop() {
  running_ = false;
  reconnect_.stop();
  socket_.abort();
  if (std::exchange(loggedIn_, false))
    emit connectedChanged(false);
}

void BackendControl::scheduleReconnect() {
  if (!running_ || reconnect_.isActive())
    return;
  backoffMs_ = backoffMs_ == 0 ? kFirstBackoffMs : std::min(backoffMs_ * 2, kMaxBackoffMs);
  reconnect_.start(backoffMs_);
}

void BackendControl::SetLogin(std::string userId, PasswordSource passwords) {
  userId_ = std::move(userId);
  passwords_ = std::move(passwords);
}

void BackendControl::sendLogin(const std::optional<std::string>& password) {
  kdl::Message login;
  login.Add(vh::kTagRequestName, vh::kLoginRequest);
  login.Add(vh::kTagUserId, userId_);
  if (password)
    login.Add(vh::kTagPassword, *password);
  std::string frame;
  if (!kdl::AppendFrame(frame, login.Serialise()))
    return;
  socket_.write(frame.data(), static_cast<qint64>(frame.size()));
}

bool BackendControl::onLoginAnswer(const kdl::Message& msg) {
  if (loggedIn_ || msg.Text(vh::kTagAnsweredName) != vh::kLoginRequest)
    return false;
  const auto status = msg.Text(vh::kTagStatus);
  const QString user = QString::fromStdString(userId_);
  if (status == vh::kLoginAccepted) {
    loggedIn_ = true;
    qCInfo(lcBackend) << "logged in as" << (userId_.empty() ? "the administrator" : user);
    emit connectedChanged(true);
  } else if (status == vh::kPasswordNeeded) {
    // Asked outside the read handler: a dialog runs an event loop of its own.
    QTimer::singleShot(0, this, [this, user] {
      const auto password = passwords_ ? passwords_() : std::nullopt;
      if (!password)
        failLogin(QString("the back-end wants a password for user \"%1\"").arg(user));
      else if (IsConnectedSocket())
        sendLogin(password);
    });
  } else {
    failLogin(QString("login refused: the back-end does not know user \"%1\", or the password "
                      "is wrong")
                  .arg(user));
  }
  return true;
}

void BackendControl::failLogin(const QString& why) {
  qCWarning(lcBackend) << why;
  Stop();
  emit loginFailed(why);
}

int BackendControl::Attach(CBrioRxNotifierBase* receiver) {
  if (!receiver)
    return 0;
  if (std::find(receivers_.begin(), receivers_.end(), receiver) == receivers_.end())
    receivers_.push_back(receiver);
  receiversChanged_ = true;
  return 1;
}

void BackendControl::Detach(CBrioRxNotifierBase* receiver) {
  receivers_.erase(std::remove(receivers_.begin(), receivers_.end(), receiver), receivers_.end());
  receiversChanged_ = true;
}

bool BackendControl::IsConnectedSocket() const {
  return socket_.state() == QAbstractSocket::ConnectedState;
}

int BackendControl::IsConnected() const {
  return loggedIn_ && IsConnectedSocket() ? 1 : 0;
}

int BackendControl::Send(uint64_t* outSlot, KdlMsg* msg, int, KdlError* err) {
  if (!IsConnected()) {
    setError(err, KDL_E_STATE, "not connected to the back-end");
    return 0;
  }
  const void* bytes = nullptr;
  uint32_t length = 0;
  if (!msg || !kdl_serialise(msg, &bytes, &length, err))
    return 0;
  std::string frame;
  if (!kdl::AppendFrame(frame, std::string_view(static_cast<const char*>(bytes), length))) {
    setError(err, KDL_E_TOOBIG, "message too large to frame");
    return 0;
  }
  socket_.write(frame.data(), static_cast<qint64>(frame.size()));
  if (outSlot)
    *outSlot = uint64_t{connection_} << 32 | uint32_t(++sequence_);
  return 1;
}

void BackendControl::onReadyRead() {
  readFrames();
}

// Takes frames until maxPending_ messages wait; what is left stays in the
// socket, whose full buffers make the back-end wait. Frames wait as bytes
// and are parsed when delivered, the login's answer among them.
void BackendControl::readFrames() {
  while (pending_.size() < maxPending_) {
    std::string_view payload;
    if (inbox_.Next(&payload)) {
      pending_.Push(payload);
      peakPending_ = std::max(peakPending_, pending_.size());
      continue;
    }
    if (socket_.bytesAvailable() <= 0)
      break;
    readBuffer_.resize(kReadChunk); // kept: no block allocated per chunk
    const qint64 got = socket_.read(readBuffer_.data(), kReadChunk);
    if (got <= 0)
      break;
    inbox_.Feed(readBuffer_.data(), static_cast<size_t>(got));
    if (inbox_.failed()) {
      qCWarning(lcBackend) << "oversize frame of" << inbox_.oversizeLength()
                           << "bytes; reconnecting";
      socket_.abort(); // the splitter is renewed on the next connection
      scheduleReconnect();
      break;
    }
  }
  if (!delivering_ && !pending_.empty()) {
    delivering_ = true;
    QTimer::singleShot(0, this, &BackendControl::deliverSlice);
  }
}

// Delivers until the queue and the socket's buffer run dry or the slice's
// time is up. Each message is parsed into reader_ and taken off the queue
// before any receiver sees it, so a receiver that runs an event loop of its
// own (a message box) may let more frames in meanwhile.
void BackendControl::deliverSlice() {
  QElapsedTimer clock;
  clock.start();
  for (int delivered = 0;; ++delivered) {
    if (pending_.empty())
      readFrames(); // delivering_ is set: this only takes frames
    // The queue holds a few milliseconds' worth of a large answer: rather
    // than end the slice and wait a turn of the event loop for the socket,
    // take what the system already holds for it.
    if (pending_.empty() && IsConnectedSocket() && socket_.waitForReadyRead(0))
      readFrames();
    if (pending_.empty())
      break;
    if (delivered % kClockStride == 0 && clock.elapsed() >= kSliceBudgetMs)
      break;
    std::string_view payload;
    pending_.Front(&payload);
    KdlError err{};
    const bool parsed = reader_.ParseInto(payload, &err);
    pending_.Pop();
    if (!parsed) {
      qCWarning(lcBackend) << "malformed message ignored:" << err.text;
      continue;
    }
    // The login's answer is taken in turn, after everything the previous
    // connection brought: a request sent once it counts as connected can
    // never have its answer mixed with the tail of an older one.
    if (onLoginAnswer(reader_))
      continue;
    if (receiversChanged_) {
      deliverTo_ = receivers_;
      receiversChanged_ = false;
    }
    for (size_t k = 0; k < deliverTo_.size(); ++k) {
      CBrioRxNotifierBase* r = deliverTo_[k];
      // One detached by an earlier receiver of this message may be gone.
      if (receiversChanged_ &&
          std::find(receivers_.begin(), receivers_.end(), r) == receivers_.end())
        continue;
      r->OnResponse(nullptr, reader_.get(), nullptr);
    }
  }
  readFrames(); // room again: take what waits in the socket
  if (!pending_.empty()) {
    QTimer::singleShot(0, this, &BackendControl::deliverSlice);
    return;
  }
  delivering_ = false;
  emit idle();
}

} // namespace host
