#include "TemplatePlatform.h"

#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"

namespace port_template {

using zorvik::platform::Environment;

TemplatePlatform::TemplatePlatform() {
    Environment::install({scheduler_, webEngine_, application_, defaults_, stage_});
    presenter_ = zorvik::platform::makeOnMainThread<zorvik::platform::UIViewController>();
    presenter_->setShownByStage(true);
}

TemplatePlatform::~TemplatePlatform() {
    // What goes may use the toolkit a last time and post, so the port stays installed, and its
    // services whole, until nothing is left.
    scheduler_.shutDown();
    stage_.dropScreens();
    presenter_.reset();
    Environment::uninstall();
}

}  // namespace port_template
