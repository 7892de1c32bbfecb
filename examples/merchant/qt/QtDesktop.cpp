#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QFrame>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>

#include "examples/common/Money.h"
#include "examples/merchant/Desktop.h"
#include "platform/qt/QtPlatform.h"

namespace zorvik::demo {

using platform::Dictionary;
using platform::qt::QtPlatform;

namespace {

// Sizes of type in points: they follow the desktop's text scale, which pixels do not.
constexpr const char* rules = R"css(
#shop { background: @paper; }
#shop QLabel { color: @ink; font-size: 11.25pt; }
#head { background: #0b6560; }
#shop #head QLabel { color: #ffffff; font-size: 12.75pt; font-weight: 700; }
#shop #head #monogram { background: rgba(255, 255, 255, 46); border-radius: 12px;
    font-size: 13px; }
#shop #card { background: @sheet; border: 1px solid @edge; border-radius: 16px; }
#rule { background: @edge; }
#shop #section { font-size: 16.5pt; font-weight: 700; }
#shop #title { font-size: 12pt; font-weight: 600; }
#shop #total { font-size: 15pt; font-weight: 700; }
#shop #quiet { color: @quiet; }
#shop #small { color: @quiet; font-size: 9.75pt; }
#shop #value { font-size: 9.75pt; }
#shop #bad { color: @bad; }
#shop #outcome { font-size: 18pt; font-weight: 700; }
#shop #mark { color: #ffffff; font-size: 34px; font-weight: 800; border-radius: 36px; }
#shop QPushButton { min-height: 48px; border-radius: 12px; font-size: 11.25pt; font-weight: 600;
    border: 2px solid @outline; outline: none; padding: 2px; color: @ink; background: @sheet; }
#shop QPushButton:hover { background: @hover; }
#shop QPushButton#primary { border-color: transparent; background: #0b6560; color: #ffffff; }
#shop QPushButton#primary:hover { background: #0a5954; }
#shop QPushButton#primary:disabled { background: @off; color: @quiet; }
#shop QPushButton:focus { border: 3px solid @focus; padding: 1px; }
#shop QPushButton#primary:focus { border-color: @ink; }
)css";

struct Color {
    const char* name;
    const char* light;
    const char* dark;
};
constexpr Color colors[] = {
    {"@paper", "#f5f6f8", "#12171d"},   {"@sheet", "#ffffff", "#1b222b"},
    {"@ink", "#17212d", "#e8ecf1"},     {"@quiet", "#566273", "#a8b4c1"},
    {"@edge", "#dfe4ea", "#323d49"},    {"@hover", "#e9edf1", "#27313c"},
    {"@off", "#d8dee5", "#2a343f"},     {"@bad", "#a3261b", "#ff9a8f"},
    {"@outline", "#8793a1", "#76838f"}, {"@focus", "#2b6cb0", "#8abdf5"},
};

// As light or dark as the desktop is.
QString styleSheet() {
    const bool isDark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    QString text = rules;
    for (const Color& color : colors)
        text.replace(color.name, isDark ? color.dark : color.light);
    return text;
}

struct Mark {
    const char* sign;
    const char* color;
};

Mark markOf(Outcome::Kind kind) {
    switch (kind) {
        case Outcome::Kind::success:
            return {"✓", "#0b6560"};
        case Outcome::Kind::failure:
            return {"!", "#a3261b"};
        case Outcome::Kind::cancelled:
            return {"×", "#56606d"};
        case Outcome::Kind::unknown:
            break;
    }
    return {"…", "#80590b"};
}

QString text(const std::string& words) {
    return QString::fromStdString(words);
}

QLabel* label(const std::string& words, const char* name,
              Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter) {
    auto* const made = new QLabel(text(words));
    made->setTextFormat(Qt::PlainText);
    made->setObjectName(name);
    made->setAlignment(alignment);
    made->setWordWrap(true);
    return made;
}

// Both on one line, the right one at the end.
QHBoxLayout* line(QLabel* left, QLabel* right) {
    auto* const box = new QHBoxLayout;
    box->setSpacing(16);
    right->setAlignment(Qt::AlignRight | Qt::AlignTop);
    box->addWidget(left, 1);
    box->addWidget(right);
    return box;
}

QFrame* card(int margin, int spacing) {
    auto* const made = new QFrame;
    made->setObjectName("card");
    auto* const rows = new QVBoxLayout(made);
    rows->setContentsMargins(20, margin, 20, margin);
    rows->setSpacing(spacing);
    return made;
}

void addRule(QLayout* rows) {
    auto* const rule = new QFrame;
    rule->setObjectName("rule");
    rule->setFixedHeight(1);
    rows->addWidget(rule);
}

std::string initials(const std::string& name) {
    std::string letters = name.substr(0, 1);
    const std::size_t space = name.find(' ');
    if (space != name.npos) letters.push_back(name.at(space + 1));
    return letters;
}

// The shop's window. It stays an object of the desktop's when the customer closes it.
class ShopWindow : public QWidget {
  public:
    explicit ShopWindow(std::function<bool()> mayClose) : mayClose_(std::move(mayClose)) {}

    bool isClosed = false;

  private:
    void closeEvent(QCloseEvent* event) override {
        isClosed = mayClose_();
        event->setAccepted(isClosed);
    }

    const std::function<bool()> mayClose_;
};

class QtDesktop : public Desktop {
  public:
    explicit QtDesktop(std::unique_ptr<QApplication> application,
                       std::unique_ptr<QtPlatform> platform)
        : application_(std::move(application)), platform_(std::move(platform)) {}

    void start(Events events) override;
    std::shared_ptr<platform::UIViewController> presenter() override {
        return platform_->presenterFor(window_.get());
    }
    bool isOpen() const override { return !window_->isClosed; }
    bool runUntil(const std::function<bool()>& condition, double seconds) override {
        return platform_->runUntil(condition, seconds);
    }
    void showBasket(const std::string& problem) override;
    void showBusy() override;
    void showResult(const Dictionary& data) override;
    bool savePng(const std::string& path) override {
        return platform_->savePng(window_.get(), path);
    }
    bool hasButton(const std::string& title) const override { return buttonTitled(title); }
    bool press(const std::string& title) override {
        QAbstractButton* const button = buttonTitled(title);
        if (button) button->click();
        return button;
    }

  private:
    bool mayClose();
    QVBoxLayout* newColumn();
    void addAction(QVBoxLayout* column, const std::string& words, std::function<void()> act);
    QAbstractButton* buttonTitled(const std::string& title) const;

    const std::unique_ptr<QApplication> application_;
    const std::unique_ptr<QtPlatform> platform_;
    std::unique_ptr<ShopWindow> window_;
    Events events_;
    QScrollArea* scroll_ = nullptr;
    QPushButton* action_ = nullptr;
    bool isAsking_ = false;
};

void QtDesktop::start(Events events) {
    events_ = std::move(events);
    window_ = std::make_unique<ShopWindow>([this] { return mayClose(); });
    window_->setObjectName("shop");
    window_->setAttribute(Qt::WA_StyledBackground);
    window_->setStyleSheet(styleSheet());
    window_->setWindowTitle(shopName);
    window_->resize(390, 844);
    for (const char* key : {"Escape", "Back", "Alt+Left"}) {
        auto* const shortcut = new QShortcut(QKeySequence(key), window_.get());
        QObject::connect(shortcut, &QShortcut::activated, [this] {
            if (events_.isCheckoutOpen()) events_.back();
        });
    }

    auto* const head = new QFrame;
    head->setObjectName("head");
    auto* const title = new QHBoxLayout(head);
    title->setContentsMargins(20, 18, 20, 18);
    title->setSpacing(14);
    auto* const monogram = label(initials(shopName), "monogram", Qt::AlignCenter);
    monogram->setFixedSize(42, 42);
    title->addWidget(monogram);
    title->addWidget(label(shopName, "name"), 1);

    scroll_ = new QScrollArea;
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* const all = new QVBoxLayout(window_.get());
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(head);
    all->addWidget(scroll_, 1);
    showBasket("");
    window_->show();
}

// Asks; whoever closes the window again while the question stands means it.
bool QtDesktop::mayClose() {
    if (!events_.isCheckoutOpen() || std::exchange(isAsking_, true)) return true;
    auto* const question = new QMessageBox(QMessageBox::Question, shopName, "Leave the payment?",
                                           QMessageBox::NoButton, window_.get());
    question->setInformativeText(
        "A payment that is under way in another app goes on without this window.");
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setDefaultButton(question->addButton("Stay", QMessageBox::RejectRole));
    auto* const leave = question->addButton("Leave", QMessageBox::AcceptRole);
    QObject::connect(question, &QDialog::finished, window_.get(), [this, question, leave] {
        isAsking_ = question->clickedButton() == leave;
        if (isAsking_) window_->close();
    });
    question->open();
    return false;
}

QVBoxLayout* QtDesktop::newColumn() {
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(18, 22, 18, 22);
    column->setSpacing(16);
    content->setObjectName("shop");
    content->setAttribute(Qt::WA_StyledBackground);
    scroll_->setWidget(content);  // the one before it goes
    return column;
}

void QtDesktop::addAction(QVBoxLayout* column, const std::string& words,
                          std::function<void()> act) {
    action_ = new QPushButton(text(words));
    action_->setObjectName("primary");
    // In a turn of its own: what it does may take the button away.
    QObject::connect(action_, &QPushButton::clicked, window_.get(), std::move(act),
                     Qt::QueuedConnection);
    column->addStretch(1);
    column->addWidget(action_);
}

void QtDesktop::showBasket(const std::string& problem) {
    QVBoxLayout* const column = newColumn();
    column->addWidget(label("Your basket", "section"));
    QFrame* const list = card(6, 0);
    QLayout* const rows = list->layout();
    const auto addRow = [&](QLayout* row) {
        row->setContentsMargins(0, 14, 0, 14);
        if (rows->count() > 0) addRule(rows);
        static_cast<QVBoxLayout*>(rows)->addLayout(row);
    };
    for (const BasketItem& item : basket()) {
        auto* const words = new QVBoxLayout;
        words->setSpacing(2);
        words->addLayout(
            line(label(item.name, "title"), label(moneyText(item.amount, "INR"), "title")));
        words->addWidget(label(item.detail, "small"));
        addRow(words);
    }
    addRow(line(label("Total", "total"), label(moneyText(basketTotal(), "INR"), "total")));
    column->addWidget(list);
    column->addWidget(label("Delivered within four days. Free returns.", "small"));
    if (!problem.empty()) column->addWidget(label(problem, "bad"));
    addAction(column, payTitle(), events_.pay);
}

void QtDesktop::showBusy() {
    action_->setText("Preparing your order…");
    action_->setEnabled(false);
}

void QtDesktop::showResult(const Dictionary& data) {
    QVBoxLayout* const column = newColumn();
    const Outcome outcome = outcomeOf(data);
    const auto [sign, color] = markOf(outcome.kind);
    QFrame* const result = card(22, 6);
    auto* const mark = label(sign, "mark", Qt::AlignCenter);
    mark->setFixedSize(72, 72);
    mark->setStyleSheet(QString("background: ") + color);
    result->layout()->addWidget(mark);
    result->layout()->setAlignment(mark, Qt::AlignHCenter);
    result->layout()->addWidget(label(outcome.title, "outcome", Qt::AlignCenter));
    result->layout()->addWidget(label(outcome.words, "quiet", Qt::AlignCenter));
    column->addWidget(result);

    auto* const told = new QPushButton(detailsTitle);
    QFrame* const details = card(22, 10);
    for (const auto& [key, value] : rowsOf(data)) {
        QHBoxLayout* const row = line(label(key, "small"), label(value, "value"));
        static_cast<QVBoxLayout*>(details->layout())->addLayout(row);
    }
    details->hide();
    QObject::connect(told, &QPushButton::clicked, details,
                     [details] { details->setVisible(details->isHidden()); });
    column->addWidget(told);
    column->addWidget(details);
    const bool isDone =
        outcome.kind == Outcome::Kind::success || outcome.kind == Outcome::Kind::unknown;
    addAction(column, outcome.action, [this, isDone] {
        if (isDone) {
            window_->close();
        } else {
            showBasket("");
        }
    });
}

QAbstractButton* QtDesktop::buttonTitled(const std::string& title) const {
    for (auto* const button : window_->findChildren<QAbstractButton*>()) {
        if (button->isVisible() && button->text() == text(title)) return button;
    }
    return nullptr;
}

}  // namespace

std::unique_ptr<Desktop> Desktop::open() {
    static int count = 1;
    static char name[] = "zorvik-demo-merchant";
    static char* arguments[] = {name, nullptr};
    auto application = std::make_unique<QApplication>(count, arguments);
    // Stands for a desktop whose theme is dark.
    if (qEnvironmentVariable("ZORVIK_DEMO_LOOK") == "dark")
        QApplication::setPalette(QPalette(QColor("#1b222b")));
    auto platform = QtPlatform::make({.applicationId = "zorvik-demo-merchant"});
    if (!platform) return nullptr;
    return std::make_unique<QtDesktop>(std::move(application), std::move(platform));
}

}  // namespace zorvik::demo
