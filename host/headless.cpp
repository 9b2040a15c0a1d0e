#include "host/headless.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLoggingCategory>
#include <QWidget>
#include <cstdio>

#include "host/backend_control.h"
#include "host/host_context.h"
#include "kdl/tags.h"
#include "plugin/tarn_host_api.h"

namespace host {
namespace {

// Control ids of the holdings view that a query touches.
enum : int {
  kScripRadio = 21038,
  kClientRadio = 21037,
  kViewButton = 21007,
  kClientCombo = 9013,
  kNseExchange = 25001,
  kNseSymbol = 21002,
  kNseSeries = 21003,
  kBseExchange = 21004,
  kBseSymbol = 21005,
  kBseGroup = 21009
};

// Selects `text` in combo `id` as a user pick would (the view reacts to
// `activated`, which programmatic selection does not emit by itself).
bool pick(QWidget* view, int id, const QString& text, QString& error) {
  auto* combo = qobject_cast<QComboBox*>(GetDlgItem(view, id));
  if (!combo) {
    error = QString("the view has no combo %1").arg(id);
    return false;
  }
  const int index = combo->findText(text, Qt::MatchFixedString);
  if (index < 0) {
    error = QString("\"%1\" is not offered in combo %2").arg(text).arg(id);
    return false;
  }
  combo->setCurrentIndex(index);
  emit combo->activated(index);
  return true;
}

bool click(QWidget* view, int id, QString& error) {
  auto* button = qobject_cast<QAbstractButton*>(GetDlgItem(view, id));
  if (!button) {
    error = QString("the view has no button %1").arg(id);
    return false;
  }
  button->click();
  return true;
}

} // namespace

HeadlessRun::HeadlessRun(const HostOptions& options, BackendControl& control, QObject* parent)
    : QObject(parent), options_(options), control_(control) {
  timeout_.setSingleShot(true);
  connect(&timeout_, &QTimer::timeout, this, [this] {
    finish(
        3,
        view_
            ? QString("no complete answer within %1 ms").arg(options_.waitMs)
            : QString("the back-end did not serve the start-up within %1 ms").arg(options_.waitMs));
  });
  control_.Attach(this);
  // The answer's end has been seen and every record before it delivered.
  connect(&control_, &BackendControl::idle, this, [this] {
    if (waiting_ && ended_)
      answerEnded();
  });
}

HeadlessRun::~HeadlessRun() {
  control_.Detach(this);
}

void HeadlessRun::Arm() {
  timeout_.start(options_.waitMs);
}

void HeadlessRun::Start(QWidget* view) {
  view_ = view;
  QString error;
  if (!knownTarget(error)) {
    finish(2, error);
    return;
  }
  const bool ok = options_.client.isEmpty() ? selectScrip(view, error) : selectClient(view, error);
  if (!ok || !click(view, kViewButton, error)) {
    finish(2, error);
    return;
  }
  waiting_ = true;
  if (!timeout_.isActive())
    timeout_.start(options_.waitMs);
}

bool HeadlessRun::knownTarget(QString& error) const {
  const HostContext& h = TheHost();
  if (!options_.client.isEmpty()) {
    const std::string id = options_.client.toStdString();
    for (const std::string& c : h.user.clientIds)
      if (c == id)
        return true;
    error = QString("client %1 is not one user %2 may query")
                .arg(options_.client, QString::fromStdString(h.user.id));
    return false;
  }
  const std::string name = options_.scrip.mid(4).toStdString();
  if (h.master.Find(options_.scrip.left(3).toStdString(), name))
    return true;
  error = "unknown scrip " + options_.scrip;
  return false;
}

bool HeadlessRun::selectClient(QWidget* view, QString& error) {
  return click(view, kClientRadio, error) && pick(view, kClientCombo, options_.client, error);
}

bool HeadlessRun::selectScrip(QWidget* view, QString& error) {
  if (!click(view, kScripRadio, error))
    return false;
  const QString exchange = options_.scrip.left(3);
  const QString name = options_.scrip.mid(4);
  if (exchange == "NSE") {
    const ScripLeg* leg = TheHost().master.Find("NSE", name.toStdString());
    if (!leg) {
      error = "unknown scrip " + options_.scrip;
      return false;
    }
    return pick(view, kNseExchange, "NSE", error) &&
           pick(view, kNseSymbol, QString::fromStdString(leg->field[ScripLeg::Symbol]), error) &&
           pick(view, kNseSeries, QString::fromStdString(leg->field[ScripLeg::TradingSymbol]),
                error);
  }
  const ScripLeg* leg = TheHost().master.Find("BSE", name.toStdString());
  if (!leg) {
    error = "unknown scrip " + options_.scrip;
    return false;
  }
  return pick(view, kNseExchange, "--", error) && pick(view, kBseExchange, "BSE", error) &&
         pick(view, kBseGroup, QString::fromStdString(leg->field[ScripLeg::Series]), error) &&
         pick(view, kBseSymbol, QString::fromStdString(leg->field[ScripLeg::TradingSymbol]), error);
}

void HeadlessRun::OnResponse(void*, KdlMsg* msg, void*) {
  if (!waiting_)
    return;
  KdlValue name{};
  uint32_t count = 0;
  if (!kdl_get_data(msg, vh::kTagAnsweredName, 0, &name, nullptr) ||
      std::string_view(name.data, name.length) != "display_holding_detail")
    return;
  if (kdl_get_field(msg, vh::kTagStatus, &count, nullptr))
    ended_ = true; // the status record closes the stream
}

void HeadlessRun::answerEnded() {
  waiting_ = false;
  timeout_.stop();
  if (!options_.snapshot.isEmpty() && !view_->grab().save(options_.snapshot)) {
    finish(4, "cannot write " + options_.snapshot);
    return;
  }
  if (!options_.exportPath.isEmpty()) {
    finish(2, "the view offers no export yet");
    return;
  }
  finish(0, QString());
}

void HeadlessRun::finish(int code, const QString& message) {
  if (done_)
    return;
  done_ = true;
  waiting_ = false;
  if (!message.isEmpty())
    std::fprintf(stderr, "tarntrader: %s\n", qPrintable(message));
  emit finished(code);
}

} // namespace host
