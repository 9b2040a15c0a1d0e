// Headless mode: one query, driven through the view's controls exactly as a
// user would click, then a snapshot and/or an export, then exit.
//
// Exit codes: 0 done; 2 the view lacks a control the query needs, the
// scrip/client is unknown, a --custom expression is refused or a --filter
// or --sort names an unknown column; 3 no complete answer within --wait-ms; 4 the
// snapshot or export could not be written.
#pragma once

#include <QObject>
#include <QTimer>

#include "host/host_options.h"
#include "link/brio_rx.h"

class QWidget;

namespace host {

class BackendControl;

class HeadlessRun : public QObject, public CBrioRxNotifierBase {
  Q_OBJECT
public:
  HeadlessRun(const HostOptions& options, BackendControl& control, QObject* parent = nullptr);
  ~HeadlessRun() override;

  // Starts the clock: the run ends with code 3 when no complete answer has
  // arrived --wait-ms after this, whatever phase it is in.
  void Arm();
  // Starts the query on the opened view window.
  void Start(QWidget* view);

  void OnNotify() override {}
  void OnResponse(void*, KdlMsg* msg, void*) override;

signals:
  void finished(int exitCode);

private:
  bool knownTarget(QString& error) const;
  // Adds --custom columns and checks every column --filter and --sort name.
  bool prepareColumns(QWidget* view, QString& error);
  QString sortColumn() const;
  bool applyFilterAndSort();
  bool selectScrip(QWidget* view, QString& error);
  bool selectClient(QWidget* view, QString& error);
  void answerEnded();
  void finish(int code, const QString& message);

  const HostOptions& options_;
  BackendControl& control_;
  QWidget* view_ = nullptr;
  QTimer timeout_;
  bool waiting_ = false;
  bool done_ = false;
  bool ended_ = false;
};

} // namespace host
