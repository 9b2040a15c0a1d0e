// Loads a plug-in library and resolves its five entry points by name.
#pragma once

#include <QLibrary>
#include <QString>

#include "plugin/tarn_plugin_api.h"

namespace host {

class PluginLoader {
public:
  // Loads `path`. False with `error` set when the library cannot be loaded
  // or lacks one of the five exports; nothing stays loaded then.
  bool Load(const QString& path, QString& error);
  bool loaded() const { return init != nullptr; }
  // Unloads the library; its module objects (the view, its back-end link)
  // go now. Call ExitTarnPlugin first, and keep the back-end control alive
  // until this returns: the link detaches its receiver on the way out.
  void Unload();

  // The menu entry: the plug-in's title, or its name when it gives none.
  QString Title() const;
  QStringList ActionRights() const;

  GetTarnPluginInfoFn getInfo = nullptr;
  GetOptionalTarnPluginInfoFn getOptionalInfo = nullptr;
  InitTarnPluginFn init = nullptr;
  ProcessTarnPluginMsgFn process = nullptr;
  ExitTarnPluginFn exit = nullptr;

private:
  QLibrary library_;
};

} // namespace host
