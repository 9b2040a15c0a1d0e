#include "host/headless.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMetaObject>
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

// The view's own operations, asked by name: the host carries none of the
// plug-in's code.
QStringList headerNames(QWidget* view) {
  QStringList names;
  QMetaObject::invokeMethod(view, "HeaderNames", Qt::DirectConnection,
                            Q_RETURN_ARG(QStringList, names));
  return names;
}

bool hasColumn(const QStringList& names, const QString& column) {
  return names.contains(column, Qt::CaseInsensitive);
}

// "Name=expression" / "Column=text": the part before the first "=".
QString before(const QString& pair) {
  return pair.section('=', 0, 0).trimmed();
}
QString after(const QString& pair) {
  return pair.section('=', 1);
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
  if (!prepareColumns(view, error)) {
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

bool HeadlessRun::prepareColumns(QWidget* view, QString& error) {
  // Custom columns first: filters and the sort may name them.
  for (const QString& def : options_.custom) {
    const QString name = before(def);
    // A column made by an earlier run is kept in the profile; it stays.
    if (hasColumn(headerNames(view), name))
      continue;
    QString why;
    QMetaObject::invokeMethod(view, "AddCustomColumn", Qt::DirectConnection,
                              Q_RETURN_ARG(QString, why), Q_ARG(QString, name),
                              Q_ARG(QString, after(def)));
    if (!why.isEmpty()) {
      error = QString("--custom %1: %2").arg(name, why);
      return false;
    }
  }
  const QStringList names = headerNames(view);
  for (const QString& f : options_.filters)
    if (!hasColumn(names, before(f))) {
      error = QString("--filter: unknown column \"%1\"").arg(before(f));
      return false;
    }
  if (!options_.sort.isEmpty() && !hasColumn(names, sortColumn())) {
    error = QString("--sort: unknown column \"%1\"").arg(sortColumn());
    return false;
  }
  return true;
}

QString HeadlessRun::sortColumn() const {
  const QString s = options_.sort;
  return s.endsWith(":desc", Qt::CaseInsensitive) || s.endsWith(":asc", Qt::CaseInsensitive)
             ? s.left(s.lastIndexOf(':'))
             : s;
}

bool HeadlessRun::applyFilterAndSort() {
  for (const QString& f : options_.filters) {
    bool ok = false;
    QMetaObject::invokeMethod(view_, "FilterColumn", Qt::DirectConnection, Q_RETURN_ARG(bool, ok),
                              Q_ARG(QString, before(f)), Q_ARG(QString, after(f)));
    if (!ok)
      return false;
  }
  if (options_.sort.isEmpty())
    return true;
  const int wanted = options_.sort.endsWith(":desc", Qt::CaseInsensitive) ? -1 : 1;
  // A click sorts; a second click on the same label reverses.
  for (int clicks = 0; clicks < 2; ++clicks) {
    bool ok = false;
    int direction = 0;
    QMetaObject::invokeMethod(view_, "ClickHeader", Qt::DirectConnection, Q_RETURN_ARG(bool, ok),
                              Q_ARG(QString, sortColumn()));
    QMetaObject::invokeMethod(view_, "SortDirection", Qt::DirectConnection,
                              Q_RETURN_ARG(int, direction));
    if (!ok)
      return false;
    if (direction == wanted)
      return true;
  }
  return true;
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
  if (!applyFilterAndSort()) {
    finish(2, "the view refused a filter or the sort");
    return;
  }
  // The rows announced by the grid are painted before the grab.
  QCoreApplication::processEvents();
  if (!options_.snapshot.isEmpty() && !view_->grab().save(options_.snapshot)) {
    finish(4, "cannot write " + options_.snapshot);
    return;
  }
  if (!options_.exportPath.isEmpty()) {
    int written = 0;
    QMetaObject::invokeMethod(view_, "ExportGrid", Qt::DirectConnection, Q_RETURN_ARG(int, written),
                              Q_ARG(QString, options_.exportPath));
    if (!written) {
      finish(4, "cannot write " + options_.exportPath);
      return;
    }
  }
  int rows = 0;
  QMetaObject::invokeMethod(view_, "DisplayedRows", Qt::DirectConnection, Q_RETURN_ARG(int, rows));
  std::fprintf(stdout, "%d rows\n", rows);
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
