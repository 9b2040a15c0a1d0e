#include "host/plugin_loader.h"

namespace host {

bool PluginLoader::Load(const QString& path, QString& error) {
  library_.setFileName(path);
  if (!library_.load()) {
    error = library_.errorString();
    return false;
  }
  getInfo = reinterpret_cast<GetTarnPluginInfoFn>(library_.resolve("GetTarnPluginInfo"));
  getOptionalInfo =
      reinterpret_cast<GetOptionalTarnPluginInfoFn>(library_.resolve("GetOptionalTarnPluginInfo"));
  init = reinterpret_cast<InitTarnPluginFn>(library_.resolve("InitTarnPlugin"));
  process = reinterpret_cast<ProcessTarnPluginMsgFn>(library_.resolve("ProcessTarnPluginMsg"));
  exit = reinterpret_cast<ExitTarnPluginFn>(library_.resolve("ExitTarnPlugin"));
  if (!getInfo || !getOptionalInfo || !init || !process || !exit) {
    error = path + " is not a plug-in: an entry point is missing";
    init = nullptr;
    library_.unload();
    return false;
  }
  return true;
}

void PluginLoader::Unload() {
  if (!loaded())
    return;
  getInfo = nullptr;
  getOptionalInfo = nullptr;
  init = nullptr;
  process = nullptr;
  exit = nullptr;
  library_.unload();
}

QString PluginLoader::Title() const {
  QString title;
  QStringList actions;
  getOptionalInfo(&title, &actions, nullptr, nullptr);
  if (!title.isEmpty())
    return title;
  QString name, version;
  uint32_t stamp = 0, code = 0;
  getInfo(&name, &version, nullptr, &stamp, &code);
  return name;
}

QStringList PluginLoader::ActionRights() const {
  QString title;
  QStringList actions;
  getOptionalInfo(&title, &actions, nullptr, nullptr);
  return actions;
}

} // namespace host
