#pragma once

#include <QStringList>

struct HostCalls {
  bool grantMarkUnmark = true;
  QStringList actionRightQueries;
  int exchangeComboLoads = 0;
  int clientComboLoads = 0;
  QStringList sent; // requests the plug-in sent, "tag=value|..."
  class CBrioRxNotifierBase* receiver = nullptr;
};

HostCalls& Calls();
