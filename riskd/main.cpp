// tarn-riskd --listen HOST:PORT --db FILE [--auth] [--frozen-prices] [--rows N] [--seed S]
//            [--import DIR]
// tarn-riskd --db FILE [--rows N] [--import DIR] --summary
// tarn-riskd --db FILE --set-password USER   (the password from the terminal or stdin)
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>

#include "riskd/csv.h"
#include "riskd/passwords.h"
#include "riskd/server.h"
#include "riskd/summary.h"

namespace {

int Usage(const char* why) {
  std::fprintf(
      stderr,
      "tarn-riskd: %s\n"
      "usage: tarn-riskd --listen HOST:PORT --db FILE [--auth] [--frozen-prices] [--rows N]"
      " [--seed S] [--import DIR]\n"
      "       tarn-riskd --db FILE [--rows N] [--seed S] [--import DIR] --summary\n"
      "       tarn-riskd --db FILE --set-password USER\n",
      why);
  return 2;
}

struct Args {
  riskd::RiskServerOptions options;
  bool listen = false;
  bool summary = false;
  std::string setPasswordFor;
};

bool ParseListen(const std::string& text, riskd::RiskServerOptions* o) {
  const size_t colon = text.rfind(':');
  const auto port =
      colon == std::string::npos ? std::nullopt : riskd::ParseWhole(text.substr(colon + 1));
  if (!port || *port < 0 || *port > 65535)
    return false;
  o->host = text.substr(0, colon);
  o->port = static_cast<uint16_t>(*port);
  return true;
}

// Empty when the arguments are good; else why not.
std::string Parse(int argc, char** argv, Args* a) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--summary") {
      a->summary = true;
      continue;
    }
    if (arg == "--auth") {
      a->options.auth = true;
      continue;
    }
    if (arg == "--frozen-prices") {
      a->options.frozenPrices = true;
      continue;
    }
    if (i + 1 >= argc)
      return arg + " needs a value";
    const std::string value = argv[++i];
    if (arg == "--listen") {
      if (!ParseListen(value, &a->options))
        return "--listen takes HOST:PORT, not '" + value + "'";
      a->listen = true;
    } else if (arg == "--set-password") {
      a->setPasswordFor = value;
    } else if (arg == "--db") {
      a->options.store.dbPath = value;
    } else if (arg == "--import") {
      a->options.store.importDir = value;
    } else if (arg == "--rows" || arg == "--seed") {
      const auto n = riskd::ParseWhole(value);
      if (!n || *n < 1)
        return arg + " takes a positive whole number, not '" + value + "'";
      if (arg == "--rows")
        a->options.store.sample.holdings = *n;
      else
        a->options.store.sample.seed = static_cast<uint64_t>(*n);
    } else {
      return "unknown option " + arg;
    }
  }
  if (a->options.store.dbPath.empty())
    return "--db FILE is required";
  if (int(a->listen) + int(a->summary) + int(!a->setPasswordFor.empty()) != 1)
    return "give one of --listen, --summary or --set-password";
  return {};
}

int RunSummary(const Args& a) {
  riskd::Db db;
  std::string error;
  if (!riskd::SetUpStore(a.options.store, a.options.log, &db, &error)) {
    std::fprintf(stderr, "tarn-riskd: %s\n", error.c_str());
    return 1;
  }
  const std::string text = riskd::Summary(db);
  if (text.empty()) {
    std::fprintf(stderr, "tarn-riskd: summary failed: %s\n", db.LastError().c_str());
    return 1;
  }
  std::fputs(text.c_str(), stdout);
  return 0;
}

// One line from the terminal without echo, or from standard input.
bool ReadPassword(const std::string& prompt, std::string* out) {
  const bool tty = isatty(STDIN_FILENO);
  termios saved{};
  if (tty) {
    std::fprintf(stderr, "%s", prompt.c_str());
    tcgetattr(STDIN_FILENO, &saved);
    termios quiet = saved;
    quiet.c_lflag &= ~tcflag_t(ECHO);
    tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
  }
  const bool got = static_cast<bool>(std::getline(std::cin, *out));
  if (tty) {
    tcsetattr(STDIN_FILENO, TCSANOW, &saved);
    std::fprintf(stderr, "\n");
  }
  if (!out->empty() && out->back() == '\r')
    out->pop_back();
  return got;
}

int RunSetPassword(const Args& a) {
  riskd::Db db;
  std::string error;
  if (!riskd::SetUpStore(a.options.store, a.options.log, &db, &error)) {
    std::fprintf(stderr, "tarn-riskd: %s\n", error.c_str());
    return 1;
  }
  std::string password, again;
  if (!ReadPassword("Password for " + a.setPasswordFor + ": ", &password)) {
    std::fprintf(stderr, "tarn-riskd: no password given\n");
    return 1;
  }
  if (isatty(STDIN_FILENO) && (!ReadPassword("Again: ", &again) || again != password)) {
    std::fprintf(stderr, "tarn-riskd: the passwords differ; nothing changed\n");
    return 1;
  }
  if (!riskd::SetPassword(db, a.setPasswordFor, password, &error)) {
    std::fprintf(stderr, "tarn-riskd: %s\n", error.c_str());
    return 1;
  }
  std::fprintf(stderr, "tarn-riskd: password of %s set\n", a.setPasswordFor.c_str());
  return 0;
}

} // namespace

int main(int argc, char** argv) {
  Args args;
  if (const std::string why = Parse(argc, argv, &args); !why.empty())
    return Usage(why.c_str());
  if (args.summary)
    return RunSummary(args);
  if (!args.setPasswordFor.empty())
    return RunSetPassword(args);

  // Blocked before the server thread starts, so only sigwait sees them.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGTERM);
  sigaddset(&stopSignals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  std::string error;
  auto server = riskd::RiskServer::Start(args.options, &error);
  if (!server) {
    std::fprintf(stderr, "tarn-riskd: %s\n", error.c_str());
    return 1;
  }
  std::fprintf(stderr, "tarn-riskd: listening on %s:%u\n", args.options.host.c_str(),
               static_cast<unsigned>(server->port()));
  int signal = 0;
  sigwait(&stopSignals, &signal);
  std::fprintf(stderr, "tarn-riskd: signal %d, shutting down\n", signal);
  server->Stop();
  return 0;
}
