// Routes vh::ShowMessage to what the user sees. Interactive sessions get a
// plain modal box with OK; without a window system (offscreen or minimal
// platform, as in headless runs and tests) a modal box would wait forever, so
// the text is logged under the "viewholdings.message" category instead.
// Status texts are always only logged ("viewholdings.status").
#pragma once

namespace vh {

void InstallPluginMessageSinks();

} // namespace vh
