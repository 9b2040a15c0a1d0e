#include "host/host_options.h"

#include <QCommandLineParser>

namespace host {
namespace {

bool splitHostPort(const QString& text, QString& hostName, quint16& port) {
  const int colon = text.lastIndexOf(':');
  if (colon <= 0)
    return false;
  bool ok = false;
  const uint value = text.mid(colon + 1).toUInt(&ok);
  if (!ok || value == 0 || value > 65535)
    return false;
  hostName = text.left(colon);
  port = static_cast<quint16>(value);
  return true;
}

bool validScrip(const QString& scrip) {
  return (scrip.startsWith("NSE:") || scrip.startsWith("BSE:")) && scrip.size() > 4;
}

} // namespace

bool ParseHostOptions(const QStringList& arguments, HostOptions& out, QString& error,
                      bool& helpRequested) {
  QCommandLineParser p;
  p.setApplicationDescription("tarntrader - reference host for the View Holdings plug-in");
  const QCommandLineOption help({"h", "help"}, "Show this help.");
  const QCommandLineOption user("user", "Log in as user ID (default: the desk administrator).",
                                "ID");
  const QCommandLineOption userType("user-type", "User type N.", "N", "0");
  const QCommandLineOption rights("rights", "Comma-separated action rights.", "LIST");
  const QCommandLineOption backend("backend", "Use the back-end at HOST:PORT.", "HOST:PORT");
  const QCommandLineOption plugin("plugin", "Path of libviewholdings.", "PATH");
  const QCommandLineOption db("db", "Embedded back-end database file.", "FILE");
  const QCommandLineOption rows("rows", "Holdings rows of a new sample database.", "N");
  const QCommandLineOption settings("settings",
                                    "Keep the plug-in's settings in DIR (default: the user's "
                                    "config folder).",
                                    "DIR");
  const QCommandLineOption clients("clients", "Offer only the client ids listed in FILE.", "FILE");
  const QCommandLineOption sort("sort", "Headless: click the header of COL (twice for :desc).",
                                "COL[:desc]");
  const QCommandLineOption client("client", "Headless: query client ID.", "ID");
  const QCommandLineOption scrip("scrip", "Headless: query NSE:SYMBOL-SERIES or BSE:SYMBOL.",
                                 "SCRIP");
  const QCommandLineOption custom("custom", "Headless: add custom column 'Name=expr'.", "DEF");
  const QCommandLineOption filter("filter", "Headless: header filter COL=TEXT.", "FILTER");
  const QCommandLineOption snapshot("snapshot", "Headless: save the view as PNG.", "FILE");
  const QCommandLineOption exportTo("export", "Headless: export the grid to .xlsx.", "FILE");
  const QCommandLineOption passwordFile(
      "password-file", "Password for a back-end run with --auth (a file only you may read).",
      "FILE");
  const QCommandLineOption waitMs("wait-ms", "Headless: longest wait for the answer.", "N",
                                  "30000");
  p.addOptions({help, user, userType, rights, backend, plugin, db, rows, client, scrip, custom,
                filter, snapshot, exportTo, waitMs, passwordFile, settings, clients, sort});
  helpRequested = false;
  if (!p.parse(arguments)) {
    error = p.errorText();
    return false;
  }
  if (p.isSet(help)) {
    helpRequested = true;
    error = p.helpText();
    return false;
  }
  if (!p.positionalArguments().isEmpty()) {
    error = "unexpected argument: " + p.positionalArguments().first();
    return false;
  }
  bool ok = true;
  out.userId = p.value(user);
  out.userType = p.value(userType).toUInt(&ok);
  out.userTypeGiven = p.isSet(userType);
  if (!ok) {
    error = "--user-type needs a number";
    return false;
  }
  out.rights = p.value(rights).split(',', Qt::SkipEmptyParts);
  if (p.isSet(backend) && !splitHostPort(p.value(backend), out.backendHost, out.backendPort)) {
    error = "--backend needs HOST:PORT";
    return false;
  }
  out.pluginPath = p.value(plugin);
  out.passwordFile = p.value(passwordFile);
  out.dbPath = p.value(db);
  if (p.isSet(rows)) {
    out.sampleRows = p.value(rows).toLongLong(&ok);
    if (!ok || out.sampleRows <= 0) {
      error = "--rows needs a positive number";
      return false;
    }
  }
  out.client = p.value(client);
  out.scrip = p.value(scrip);
  if (!out.client.isEmpty() && !out.scrip.isEmpty()) {
    error = "give either --client or --scrip, not both";
    return false;
  }
  if (!out.scrip.isEmpty() && !validScrip(out.scrip)) {
    error = "--scrip needs NSE:SYMBOL-SERIES or BSE:SYMBOL";
    return false;
  }
  out.settingsDir = p.value(settings);
  out.clientsFile = p.value(clients);
  out.sort = p.value(sort);
  for (const QString& c : p.values(custom))
    if (!c.contains('=') || c.startsWith('=')) {
      error = "--custom needs 'Name=expression'";
      return false;
    }
  for (const QString& f : p.values(filter))
    if (!f.contains('=') || f.startsWith('=')) {
      error = "--filter needs 'Column=text'";
      return false;
    }
  out.custom = p.values(custom);
  out.filters = p.values(filter);
  out.snapshot = p.value(snapshot);
  out.exportPath = p.value(exportTo);
  out.waitMs = p.value(waitMs).toInt(&ok);
  if (!ok || out.waitMs <= 0) {
    error = "--wait-ms needs a positive number";
    return false;
  }
  return true;
}

} // namespace host
