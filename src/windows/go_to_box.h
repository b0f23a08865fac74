#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/picker.h"

namespace windows {

/// One box in which several kinds of things are found; the first character that is typed says which
/// kind, such as "@" for symbols.
///
///     go_to_box box;
///     box.add('@', [&] { return symbols(); });
///     if (auto const row = desktop.pickers().run(request, box)) box.accept(*row);
///
/// Made for one use. Main thread only.
class go_to_box final : public platform::picker_source {
 public:
  struct part {
    std::shared_ptr<platform::picker_source> source;
    std::function<bool(platform::picked_row)> accept;
  };
  /// What is typed after `prefix` is for the part, which is made when it is needed first. '\0' is
  /// for what has no prefix of another part.
  void add(char prefix, std::function<part()> make);

  /// False if what was chosen could not be done.
  bool accept(platform::picked_row chosen);
  /// What stands in the field.
  std::string const& typed() const { return typed_; }

  // platform::picker_source
  void set_filter(std::string const& text) override;
  void take_key(platform::key_event const&) override {}
  std::size_t count() const override { return now().count(); }
  platform::picker_row row(std::size_t index) const override { return now().row(index); }
  std::string help(std::size_t index) const override { return now().help(index); }
  std::size_t first_row() const override { return now().first_row(); }
  std::string note() const override { return now().note(); }
  bool is_filling() const override { return now().is_filling(); }
  std::optional<std::size_t> take_new_rows(std::size_t chosen) override {
    return now().take_new_rows(chosen);
  }

 private:
  struct kind {
    std::function<part()> make;
    part made;
  };
  part& made(char prefix) const;
  platform::picker_source& now() const { return *made(prefix_).source; }

  mutable std::map<char, kind> kinds_;
  char prefix_ = '\0';
  std::string typed_;
};

/// A line of a text, as LINE or LINE:COLUMN. `lines` is how many there are.
class line_choice final : public platform::picker_source {
 public:
  explicit line_choice(std::size_t lines) : lines_(lines) {}

  /// From 1; a column of 0 is none.
  std::size_t line() const { return line_; }
  std::size_t column() const { return column_; }

  // platform::picker_source
  void set_filter(std::string const& text) override;
  void take_key(platform::key_event const&) override {}
  std::size_t count() const override { return line_ == 0 ? 0 : 1; }
  platform::picker_row row(std::size_t index) const override;
  std::string note() const override;

 private:
  std::size_t const lines_;
  std::size_t line_ = 0, column_ = 0;
};

}  // namespace windows
