// Loads what the host services answer from: the user (type, rights, the
// client ids it may query) and the scrip master, from the back-end, when the
// connection comes up. Requests "tarn_user_info" and "tarn_scrip_master"
// (docs/riskd.md); a connection lost half-way starts the load again.
#pragma once

#include <QObject>

#include "host/scrip_master.h"
#include "link/brio_rx.h"

namespace host {

class BackendControl;

class StartupLoader : public QObject, public CBrioRxNotifierBase {
  Q_OBJECT
public:
  // `userId` empty asks for the desk's administrator.
  StartupLoader(BackendControl& control, std::string userId, ScripMaster& master, UserInfo& user,
                QObject* parent = nullptr);
  ~StartupLoader() override;

  bool ready() const { return userDone_ && masterDone_; }

  void OnNotify() override {}
  void OnResponse(void*, KdlMsg* msg, void*) override;

signals:
  void ready_();
  void failed(const QString& reason);

private:
  void request();
  void onUser(KdlMsg* msg, bool end);
  void onMaster(KdlMsg* msg, bool end);
  void checkReady();

  BackendControl& control_;
  std::string userId_;
  ScripMaster& master_;
  UserInfo& user_;
  bool userDone_ = false;
  bool masterDone_ = false;
  bool announced_ = false;
};

} // namespace host
