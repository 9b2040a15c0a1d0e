#include "host/startup_loader.h"

#include <cstdlib>
#include <string_view>

#include "host/backend_control.h"
#include "kdl/message.h"
#include "kdl/tags.h"

namespace host {
namespace {

std::string_view text(KdlMsg* msg, uint32_t tag, uint32_t index = 0) {
  KdlValue v{};
  if (!kdl_get_data(msg, tag, index, &v, nullptr))
    return {};
  return {v.data, v.length};
}

uint32_t count(KdlMsg* msg, uint32_t tag) {
  uint32_t n = 0;
  return kdl_get_field(msg, tag, &n, nullptr) ? n : 0;
}

} // namespace

StartupLoader::StartupLoader(BackendControl& control, std::string userId, ScripMaster& master,
                             UserInfo& user, QObject* parent)
    : QObject(parent), control_(control), userId_(std::move(userId)), master_(master), user_(user) {
  control_.Attach(this);
  connect(&control_, &BackendControl::connectedChanged, this, [this](bool up) {
    if (up && !ready())
      request();
  });
  if (control_.IsConnected())
    request();
}

StartupLoader::~StartupLoader() {
  control_.Detach(this);
}

void StartupLoader::request() {
  master_.Clear();
  user_ = UserInfo{};
  userDone_ = masterDone_ = false;
  kdl::Message user;
  user.Add(vh::kTagRequestName, vh::kUserInfoRequest);
  user.Add(vh::kTagUserId, userId_);
  kdl::Message master;
  master.Add(vh::kTagRequestName, vh::kScripMasterRequest);
  KdlError err{};
  if (!control_.Send(nullptr, user.get(), 0, &err) ||
      !control_.Send(nullptr, master.get(), 0, &err))
    emit failed(QString("cannot ask the back-end for the user and scrips: %1").arg(err.text));
}

void StartupLoader::OnResponse(void*, KdlMsg* msg, void*) {
  const std::string_view name = text(msg, vh::kTagAnsweredName);
  uint32_t values = 0;
  const bool end = kdl_get_field(msg, vh::kTagStatus, &values, nullptr) != 0;
  if (name == vh::kUserInfoRequest && !userDone_)
    onUser(msg, end);
  else if (name == vh::kScripMasterRequest && !masterDone_)
    onMaster(msg, end);
}

void StartupLoader::onUser(KdlMsg* msg, bool end) {
  if (end) {
    if (text(msg, vh::kTagStatus) != "1") {
      emit failed(userId_.empty()
                      ? QString("the back-end has no administrator; log in with --user ID")
                      : QString("the back-end does not know user \"%1\"")
                            .arg(QString::fromStdString(userId_)));
      return;
    }
    userDone_ = true;
    checkReady();
    return;
  }
  if (text(msg, vh::kTagSubKind) == "USER") {
    user_.id = std::string(text(msg, vh::kTagUserId));
    user_.type = static_cast<unsigned>(std::atoi(std::string(text(msg, vh::kTagUserType)).c_str()));
    user_.administrator = text(msg, vh::kTagUserAdmin) == "1";
    for (uint32_t i = 0, n = count(msg, vh::kTagUserRight); i < n; ++i)
      user_.rights.emplace(text(msg, vh::kTagUserRight, i));
    for (uint32_t i = 0, n = count(msg, vh::kTagUserExchange); i < n; ++i)
      user_.exchanges.emplace_back(text(msg, vh::kTagUserExchange, i));
    return;
  }
  for (uint32_t i = 0, n = count(msg, vh::kTagClientId); i < n; ++i)
    user_.clientIds.emplace_back(text(msg, vh::kTagClientId, i));
}

void StartupLoader::onMaster(KdlMsg* msg, bool end) {
  if (end) {
    master_.Finish();
    masterDone_ = true;
    checkReady();
    return;
  }
  ScripLeg leg;
  for (uint32_t i = 0; i < ScripLeg::Count; ++i)
    leg.field[i] = std::string(text(msg, vh::kTagScripField + i));
  master_.Add(std::move(leg));
}

void StartupLoader::checkReady() {
  if (ready() && !announced_) {
    announced_ = true;
    emit ready_();
  }
}

} // namespace host
