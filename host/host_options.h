// tarntrader's command line.
#pragma once

#include <QString>
#include <QStringList>

namespace host {

struct HostOptions {
  QString userId; // empty: the desk's administrator
  unsigned userType = 0;
  bool userTypeGiven = false; // else the back-end's type of the user
  QStringList rights;         // action rights granted (ignored for the administrator)
  QString backendHost;        // empty: start the embedded back-end
  quint16 backendPort = 0;
  QString pluginPath;
  QString passwordFile;  // else a dialog asks, when the back-end wants a password
  QString dbPath;        // embedded back-end's database (default: user data dir)
  qint64 sampleRows = 0; // embedded back-end: rows of a new sample database (0 = default)
  QString settingsDir;   // --settings DIR (default: the user's config folder)
  QString clientsFile;   // --clients FILE: only these clients (one id a line)

  // Headless mode: one query, no window system needed.
  QString client;      // --client ID
  QString scrip;       // --scrip NSE:SYMBOL-SERIES | BSE:SYMBOL
  QStringList custom;  // --custom 'Name=expr' (repeatable)
  QStringList filters; // --filter COL=TEXT (repeatable)
  QString sort;        // --sort COL[:desc]
  QString snapshot;    // --snapshot FILE.png
  QString exportPath;  // --export FILE.xlsx
  int waitMs = 30000;  // --wait-ms N: longest wait for the answer

  bool headless() const { return !client.isEmpty() || !scrip.isEmpty(); }
  bool administrator() const { return userId.isEmpty(); }
};

// Parses `arguments` (argv, program name first). On a bad command line
// returns false with a message in `error`; `--help` returns false with the
// usage text in `error` and `helpRequested` set.
bool ParseHostOptions(const QStringList& arguments, HostOptions& out, QString& error,
                      bool& helpRequested);

} // namespace host
