#pragma once

#include <QStringList>

struct HostCalls {
  bool grantMarkUnmark = true;
  QStringList actionRightQueries;
  int exchangeComboLoads = 0;
  int clientComboLoads = 0;
};

HostCalls& Calls();
