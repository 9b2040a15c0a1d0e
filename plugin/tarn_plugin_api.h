// The plug-in ABI: the five exports that a host resolves by name with
// dlsym/GetProcAddress. Shared by the plug-in and every host.
#pragma once

#include <cstdint>

#include <QString>
#include <QStringList>

class QWidget;

// What the host passes to InitTarnPlugin. Only the parent window is read by
// the plug-in; it is the ninth pointer-sized member (byte offset 64 on 64-bit).
struct TarnHostContext {
  void* reserved[8];
  QWidget* parentWindow;
};

#if defined(_WIN32)
#define TARN_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define TARN_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

// Always returns 1; fills "View Holdings", "5.3.1.0", 29032010 and 126.
TARN_PLUGIN_EXPORT int32_t GetTarnPluginInfo(QString* name, QString* version, void* ignored,
                                             uint32_t* stamp, uint32_t* code);
// Sets the title and appends the one action right the plug-in declares.
TARN_PLUGIN_EXPORT void GetOptionalTarnPluginInfo(QString* title, QStringList* actions, void*,
                                                  void*);
// Opens (first call: creates) the view.
TARN_PLUGIN_EXPORT void InitTarnPlugin(TarnHostContext* host, const char* userId, uint32_t userType,
                                       QString unused);
// Does nothing; returns 0.
TARN_PLUGIN_EXPORT int32_t ProcessTarnPluginMsg(void* hostMessage);
// Saves the view's settings (when it exists) and frees the header images.
TARN_PLUGIN_EXPORT void ExitTarnPlugin();

using GetTarnPluginInfoFn = int32_t (*)(QString*, QString*, void*, uint32_t*, uint32_t*);
using GetOptionalTarnPluginInfoFn = void (*)(QString*, QStringList*, void*, void*);
using InitTarnPluginFn = void (*)(TarnHostContext*, const char*, uint32_t, QString);
using ProcessTarnPluginMsgFn = int32_t (*)(void*);
using ExitTarnPluginFn = void (*)();
