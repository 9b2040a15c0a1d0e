// The five entry points the host resolves by name.
//
// The host's framework needs a module-state switch at every entry point but
// ProcessTarnPluginMsg; Qt has no such thing (resources and widgets are found
// through the process-wide QApplication), so there is nothing to switch.
#include "plugin/tarn_plugin_api.h"

#include <cstdio>

#include <QCoreApplication>
#include <QFileInfo>

#include "common/host_proc.h"
#include "common/message.h"
#include "grid/widgets/appearance_hook.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "plugin/message_box_sink.h"
#include "plugin/module_state.h"
#include "plugin/plugin_view.h"
#include "plugin/tarn_host_api.h"
#include "settings/settings_paths.h"

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

namespace {

constexpr uint32_t kStamp = 29032010;
constexpr uint32_t kCode = 126;
constexpr const char* kPluginName = "View Holdings";
constexpr const char* kPluginVersion = "5.3.1.0";
constexpr const char* kTitle = "RMS View Holdings";
constexpr const char* kActionWord = "Mark/UnMark";

void* mainModuleHandle() {
#if defined(_WIN32)
  return GetModuleHandleA(nullptr);
#else
  return dlopen(nullptr, RTLD_LAZY | RTLD_NOLOAD);
#endif
}

std::string executablePath() {
  // applicationFilePath needs a QCoreApplication; a host without one still
  // gets its path from the platform.
  if (QCoreApplication::instance())
    return QCoreApplication::applicationFilePath().toStdString();
  return vh::HostExecutablePath();
}

// The first command-line argument as a path. A bare program name was found
// on PATH; a relative path is taken from where the host was started.
std::string commandLinePath() {
  const QStringList args =
      QCoreApplication::instance() ? QCoreApplication::arguments() : QStringList();
  if (args.isEmpty() || !args.first().contains('/'))
    return executablePath();
  return QFileInfo(args.first()).absoluteFilePath().toStdString();
}

// Keeps the user's values and creates the window: the first compatible open.
void createView(TarnHostContext* host, const char* userId, uint32_t userType) {
  vh::ModuleState& m = vh::Module();
  m.hostContext = host;
  m.userId = userId ? userId : "";
  m.hostModule = mainModuleHandle();
  m.userType = userType;
  m.hostDirectory = vh::DirectoryOfPath(executablePath());
  vh::SetSettingsPaths({m.hostDirectory, vh::DirectoryOfPath(commandLinePath())});
  // A host may keep the settings elsewhere (tests and headless runs never
  // write beside the build).
  if (auto dir = vh::HostProcAs<pu_get_settings_directory_fn>("pu_get_settings_directory"))
    if (const char* d = dir(); d && *d)
      vh::SetSettingsPaths({d, d});
  if (!m.hostModule) {
    vh::ShowMessage("Cant rename TarnTrader.exe,Module not found");
    return;
  }
  QWidget* parent = host ? host->parentWindow : nullptr;
  if (m.view->Create(parent))
    m.view->SetTitle(kPluginName);
}

// What every grid shares is made at the first open and goes at unload,
// while the host's application object still exists: the view's window
// first (its grids save their columns), then the shared dialogs.
struct GridSharedState {
  GridSharedState() {
    vh::InstallPluginMessageSinks();
    vh::CCommonListCtrl::SetHeaderImageList(vh::MakeHeaderImageList());
    vh::InstallAppearanceDialog();
  }
  ~GridSharedState() {
    vh::Module().view.reset();
    if (!QCoreApplication::instance())
      return;
    vh::CCommonListCtrl::DestroySharedDialogs();
    vh::CFilterListCtrl::DestroySharedWindows();
    vh::CCommonListCtrl::ClearRegistry();
  }
};

} // namespace

int32_t GetTarnPluginInfo(QString* name, QString* version, void*, uint32_t* stamp, uint32_t* code) {
  if (stamp)
    *stamp = kStamp;
  if (name)
    *name = QString::asprintf("%s", kPluginName);
  if (code)
    *code = kCode;
  if (version)
    *version = QString::asprintf("%s", kPluginVersion);
  return 1;
}

void GetOptionalTarnPluginInfo(QString* title, QStringList* actions, void*, void*) {
  const QString t = QString::fromLatin1(kTitle);
  if (title)
    *title = t;
  if (actions)
    actions->append(QString::asprintf("%s: %s", kTitle, kActionWord));
}

void InitTarnPlugin(TarnHostContext* host, const char* userId, uint32_t userType, QString) {
  vh::ModuleState& m = vh::Module();
  // Made after the module state, so it goes before it.
  static GridSharedState shared;
  // The old list goes with its replacement; nothing refers to it any more.
  m.headerImages = std::make_unique<vh::HeaderImageList>(vh::MakeHeaderImageList());

  if (!vh::HostProc("pu_is_actionright_enabled")) {
    vh::ShowMessage("Initialisation failed. ZUL not compatible with Trader version.");
    return;
  }
  m.cseMode = false;
  if (!m.view)
    m.view = vh::CreateHoldingsView();
  if (!m.view->HasWindow()) {
    createView(host, userId, userType);
    if (!m.view->HasWindow())
      return;
  }
  m.view->ResetSelection();
  m.view->ShowAndRaise();
}

int32_t ProcessTarnPluginMsg(void*) {
  return 0;
}

void ExitTarnPlugin() {
  vh::ModuleState& m = vh::Module();
  if (m.view && m.view->HasWindow())
    m.view->SaveOnExit();
  m.headerImages.reset();
}
