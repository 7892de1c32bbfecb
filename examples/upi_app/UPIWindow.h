#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "examples/common/DemoUPIApps.h"
#include "examples/upi_app/PaymentRequest.h"
#include "platform/foundation/Error.h"

namespace zorvik::demo {

// What the customer, or the automatic mode, does with a payment request.
struct Answer {
    std::string_view name;          // in ZORVIK_DEMO_UPI
    std::string_view status;        // for the bank; "" reports nothing
    std::string_view returnStatus;  // for the return address; "" leaves it out
    bool returnsReference;
    std::string_view words;  // for the customer and the bank
};

// nullptr for an unknown name.
const Answer* answerByName(std::string_view name);

// The app's one window: payee, amount and reference, and what can be done with them. Reports to
// the bank, then closes. Owned by main, which waits for `isOpen` to end. Main thread only.
class UPIWindow {
  public:
    // backendUrl is where the bank's desk is.
    UPIWindow(const DemoUPIApp& app, platform::Result<PaymentRequest> request,
              std::string backendUrl);
    ~UPIWindow();
    UPIWindow(const UPIWindow&) = delete;
    UPIWindow& operator=(const UPIWindow&) = delete;

    bool isOpen() const { return window_ != nullptr; }
    // Does this after so many seconds, and writes the window as a PNG first when a folder is given.
    void answerAfter(double seconds, const Answer& answer, const std::string& pngFolder);

  private:
    struct Report;

    void build();
    // Escape cancels.
    static gboolean keyPressed(GtkEventControllerKey* keys, guint key, guint code,
                               GdkModifierType state, UPIWindow* self);
    GtkWidget* requestView();
    GtkWidget* details();
    GtkWidget* answerButton(const std::string& text, const char* style, const char* answerName);
    void answer(const Answer& answer);
    void finish(const Report& report);
    // In place of the request, for the rest of the window's life; kind is "good" or "bad".
    void showResult(const std::string& title, const std::string& words, const char* kind);
    void closeAfter(unsigned milliseconds);
    bool savePng(const std::string& path);

    const DemoUPIApp& app_;
    const platform::Result<PaymentRequest> request_;
    const std::string backendUrl_;
    // Late answers of worker threads find the window gone through this.
    std::shared_ptr<UPIWindow*> self_ = std::make_shared<UPIWindow*>(this);
    GtkWidget* window_ = nullptr;
    GtkWidget* stack_ = nullptr;
    GtkWidget* actions_ = nullptr;
    bool isAnswered_ = false;
    unsigned resultMilliseconds_ = 1600;  // time to read it
};

}  // namespace zorvik::demo
