#pragma once

#include "desktop/OutputPage.h"
#include "desktop/web/PageScheme.h"

#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

#include <string>
#include <vector>

namespace widgets {

/// The browser's page: what it wants to do beside showing itself is asked of the logic, or refused.
class BrowserPage final : public QWebEnginePage {
 public:
  BrowserPage(QWebEngineProfile* profile, platform::html_window_delegate*& delegate);

  /// The next navigation to this URL is the program's own.
  void expect(QUrl const& url) { expected_ = url; }

 protected:
  bool acceptNavigationRequest(QUrl const& url, NavigationType type, bool is_main) override;
  QWebEnginePage* createWindow(WebWindowType type) override;
  QStringList chooseFiles(FileSelectionMode, QStringList const&, QStringList const&) override;
  void javaScriptAlert(QUrl const& origin, QString const& message) override;
  bool javaScriptConfirm(QUrl const& origin, QString const& message) override;
  bool javaScriptPrompt(QUrl const& origin, QString const& message, QString const& initial,
                        QString* result) override;
  void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, QString const& message,
                                int line, QString const& source) override;

 private:
  static constexpr int longest_question = 2000;  // units

  /// Not while something else is asked, nor again and again.
  bool may_ask();
  std::size_t ask(QString const& message, std::vector<std::string> buttons);
  QString view_title() const;

  platform::html_window_delegate*& delegate_;
  QUrl expected_;
  int questions_ = 0;
};

class WebOutputPage final : public OutputPage {
 public:
  explicit WebOutputPage(platform::html_window_delegate& delegate);
  ~WebOutputPage() override;

  QWidget* widget() override { return &view_; }
  void load(std::string const& url, std::shared_ptr<platform::page_stream> content) override;
  void stop_loading() override;
  platform::page_frame frame() const override;
  void scroll_to(platform::point upper_left) override;
  bool can_print() const override { return true; }
  void print() override;

 protected:
  void copy() override { page_.triggerAction(QWebEnginePage::Copy); }
  void select_all() override { page_.triggerAction(QWebEnginePage::SelectAll); }
  void set_text_size(text_size size) override;

 private:
  QWebEngineProfile profile_;
  PageScheme scheme_;
  RequestFilter filter_;
  QWebEngineView view_;
  BrowserPage page_;  // goes before the view and its profile
  std::shared_ptr<platform::page_stream> stream_;
};

}  // namespace widgets
