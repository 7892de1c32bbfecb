#include "examples/merchant/DemoServices.h"

#include "core/development/DevelopmentCore.h"
#include "examples/common/DemoUPIApps.h"
#include "examples/common/HttpClient.h"
#include "examples/merchant/HttpOrderBook.h"
#include "examples/merchant/Journal.h"
#include "platform/runtime/DispatchQueue.h"

namespace zorvik::demo {

using platform::Dictionary;
using platform::DispatchQueue;

namespace {

void inBackground(std::function<void()> task) {
    DispatchQueue::global(DispatchQueue::QualityOfService::background).async(std::move(task));
}

}  // namespace

void configureServices(const std::string& backendUrl,
                       std::shared_ptr<development::EventSink> eventSink) {
    development::Configuration configuration;
    configuration.webViewViewUrl = backendUrl + "/checkout?token=%@";
    configuration.webViewRespCheckUrl = backendUrl + "/payment/response";
    for (const DemoUPIApp& app : demoUPIApps()) {
        configuration.upiApps.push_back(
            {{app.code, app.name, app.packageName, backendUrl + "/icons/" + app.icon},
             app.returnScheme});
    }
    configuration.runInBackground = inBackground;
    configuration.eventSink = std::move(eventSink);
    configuration.orderBook = std::make_shared<HttpOrderBook>(backendUrl);
    development::DevelopmentCore::shared().configure(std::move(configuration));
}

void setFault(const std::string& backendUrl, const std::string& fault, bool isOn,
              std::function<void()> done) {
    inBackground([backendUrl, fault, isOn, done = std::move(done)] {
        const auto answer =
            exchange("POST", backendUrl + "/api/demo/faults", Dictionary{{fault, isOn}});
        if (!answer) return printLabelled("demo", answer.error().localizedDescription);
        printLabelled("demo", fault + (isOn ? " is on" : " is off"));
        DispatchQueue::main().async(done);
    });
}

}  // namespace zorvik::demo
