// The host's back-end control: kdl messages framed over TCP (u32
// little-endian length + serialised message). Answers are parsed and handed
// to every attached receiver on the user-interface thread, in slices, so a
// million-row answer never freezes the window. When the back-end goes away
// the control reconnects with back-off; a send while disconnected fails.
#pragma once

#include <QObject>
#include <QTcpSocket>
#include <QTimer>
#include <deque>
#include <vector>

#include "kdl/frame.h"
#include "kdl/message.h"
#include "link/brio_rx.h"

namespace host {

class BackendControl : public QObject, public TarnBackendControl {
  Q_OBJECT
public:
  // Frames above this size are refused: the connection is dropped and made anew.
  static constexpr quint32 kMaxFrame = 16u * 1024u * 1024u;

  explicit BackendControl(QObject* parent = nullptr);
  ~BackendControl() override;

  // Connects to `host`:`port` and keeps reconnecting until Stop().
  void Start(const QString& host, quint16 port);
  void Stop();

  int Attach(CBrioRxNotifierBase* receiver) override;
  void Detach(CBrioRxNotifierBase* receiver) override;
  int IsConnected() const override;
  int Send(uint64_t* outSlot, KdlMsg* msg, int zero, KdlError* err) override;
  void Release() override {} // owned by the host; lives as long as it

signals:
  void connectedChanged(bool connected);
  // Emitted after each slice of deliveries, once the queue is empty.
  void idle();

private:
  void onReadyRead();
  void deliverSlice();
  void scheduleReconnect();

  QTcpSocket socket_;
  QTimer reconnect_;
  QString host_;
  quint16 port_ = 0;
  int backoffMs_ = 0;
  bool running_ = false;
  uint64_t sequence_ = 0;
  kdl::FrameSplitter inbox_{kMaxFrame};
  std::deque<kdl::Message> pending_; // parsed on arrival, delivered in slices
  std::vector<CBrioRxNotifierBase*> receivers_;
  // What a slice delivers to: copied from receivers_ only after a change, so
  // a receiver may attach or detach while handling a message.
  std::vector<CBrioRxNotifierBase*> deliverTo_;
  bool receiversChanged_ = true;
  bool delivering_ = false;
};

} // namespace host
