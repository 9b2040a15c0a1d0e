#pragma once

#include <QStringList>

struct HostCalls {
  QStringList sent; // requests the plug-in sent, "tag=value|..."
  class CBrioRxNotifierBase* receiver = nullptr;
};

HostCalls& Calls();
