// What a plug-in loaded by a host test showed, in order: the plug-in logs
// each message under "viewholdings.message" when there is no screen to show
// a box on.
#pragma once

#include <QStringList>

QStringList& PluginMessages();
