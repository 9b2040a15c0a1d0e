// The host's back-end control: kdl messages framed over TCP (u32
// little-endian length + serialised message). Answers are handed to every
// attached receiver on the user-interface thread, in slices of a few dozen
// milliseconds each, so a million-row answer never freezes the window; each
// is parsed when its turn comes, into one message reused for all. When the back-end goes away
// the control reconnects with back-off; a send while disconnected fails.
//
// Each connection first logs in as the host's user: the back-end answers
// every request as that user. A back-end run with --auth asks for a
// password, which the control gets from its password source. Until the
// login is accepted the control counts as disconnected.
#pragma once

#include <QObject>
#include <QTcpSocket>
#include <QTimer>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/frame_queue.h"
#include "kdl/frame.h"
#include "kdl/message.h"
#include "link/brio_rx.h"

namespace host {

class BackendControl : public QObject, public TarnBackendControl {
  Q_OBJECT
public:
  // Frames above this size are refused: the connection is dropped and made anew.
  static constexpr quint32 kMaxFrame = 16u * 1024u * 1024u;

  // Asked for the user's password when the back-end wants one; nullopt
  // when there is none to give (the login then fails).
  using PasswordSource = std::function<std::optional<std::string>()>;

  // Messages waiting for the user-interface thread, at most; past it the
  // socket is left unread, so the back-end waits (back-pressure).
  static constexpr size_t kMaxPending = 10000;
  // How long one slice of deliveries may run before the event loop gets a
  // turn (repaints, input): well under what a user notices as a stall, and
  // long enough that the turns between slices cost little of a big answer.
  static constexpr int kSliceBudgetMs = 30;

  explicit BackendControl(QObject* parent = nullptr, size_t maxPending = kMaxPending);
  ~BackendControl() override;

  // The user each connection logs in as (empty: the desk's administrator)
  // and where a password comes from. Takes effect at the next connection.
  void SetLogin(std::string userId, PasswordSource passwords);

  // Connects to `host`:`port` and keeps reconnecting until Stop().
  void Start(const QString& host, quint16 port);
  void Stop();

  int Attach(CBrioRxNotifierBase* receiver) override;
  void Detach(CBrioRxNotifierBase* receiver) override;
  int IsConnected() const override;
  int Send(uint64_t* outSlot, KdlMsg* msg, int zero, KdlError* err) override;
  void Release() override {} // owned by the host; lives as long as it

  // The most messages that ever waited for delivery at once.
  size_t peakPending() const { return peakPending_; }

signals:
  void connectedChanged(bool connected);
  // Emitted after each slice of deliveries, once the queue is empty.
  void idle();
  // The back-end refused the login (unknown user, wrong or no password);
  // the control stops reconnecting.
  void loginFailed(const QString& why);

private:
  void onReadyRead();
  void readFrames();
  void deliverSlice();
  void scheduleReconnect();
  void sendLogin(const std::optional<std::string>& password);
  // Handles an answer to the login; false for any other message.
  bool onLoginAnswer(const kdl::Message& msg);
  void failLogin(const QString& why);
  bool IsConnectedSocket() const;

  QTcpSocket socket_;
  QTimer reconnect_;
  QString host_;
  quint16 port_ = 0;
  int backoffMs_ = 0;
  bool running_ = false;
  bool loggedIn_ = false;
  std::string userId_;
  PasswordSource passwords_;
  uint64_t sequence_ = 0;
  uint32_t connection_ = 0; // counts the connections made
  kdl::FrameSplitter inbox_{kMaxFrame};
  std::vector<char> readBuffer_;                 // what one read takes from the socket
  FrameQueue pending_;                           // whole frames, delivered in slices
  kdl::Message reader_ = kdl::Message::Reader(); // each delivered message in turn
  size_t maxPending_;
  size_t peakPending_ = 0;
  std::vector<CBrioRxNotifierBase*> receivers_;
  // What a slice delivers to: copied from receivers_ only after a change, so
  // a receiver may attach or detach while handling a message.
  std::vector<CBrioRxNotifierBase*> deliverTo_;
  bool receiversChanged_ = true;
  bool delivering_ = false;
};

} // namespace host
