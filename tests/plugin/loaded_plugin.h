// Loads libviewholdings with dlopen the way a host does and resolves its five
// entry points by name; records the plug-in's messages from its log category.
#pragma once

#include <dlfcn.h>

#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include "plugin/tarn_plugin_api.h"

struct LoadedPlugin {
  void* handle = nullptr;
  GetTarnPluginInfoFn getInfo = nullptr;
  GetOptionalTarnPluginInfoFn getOptionalInfo = nullptr;
  InitTarnPluginFn init = nullptr;
  ProcessTarnPluginMsgFn process = nullptr;
  ExitTarnPluginFn exit = nullptr;

  bool load() {
    handle = dlopen(VIEWHOLDINGS_PATH, RTLD_NOW | RTLD_LOCAL);
    if (!handle)
      return false;
    getInfo = reinterpret_cast<GetTarnPluginInfoFn>(dlsym(handle, "GetTarnPluginInfo"));
    getOptionalInfo =
        reinterpret_cast<GetOptionalTarnPluginInfoFn>(dlsym(handle, "GetOptionalTarnPluginInfo"));
    init = reinterpret_cast<InitTarnPluginFn>(dlsym(handle, "InitTarnPlugin"));
    process = reinterpret_cast<ProcessTarnPluginMsgFn>(dlsym(handle, "ProcessTarnPluginMsg"));
    exit = reinterpret_cast<ExitTarnPluginFn>(dlsym(handle, "ExitTarnPlugin"));
    return getInfo && getOptionalInfo && init && process && exit;
  }
};

// The one loaded plug-in of the test program.
inline LoadedPlugin& Plugin() {
  static LoadedPlugin plugin;
  return plugin;
}

// Messages the plug-in showed, in order (its sink logs them under
// "viewholdings.message" when there is no screen to show a box on).
QStringList& PluginMessages();
void InstallPluginMessageCapture();

// The main of a plug-in test: an application, the message capture, the
// plug-in loaded, every test run, then the plug-in unloaded as a host must,
// while the statics its objects are attached to still exist.
int RunPluginTests(int argc, char** argv);
