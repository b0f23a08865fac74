#include "regex/onig_replace.h"

#include <ctime>

#include "platform/log.h"
#include "regex/letter_case.h"
#include "regex/onig_library.h"
#include "regex/valid_utf8.h"

namespace onig {

using namespace regex::onig_library;

ptrn_t::ptrn_t(char const* first, char const* last, option::type options, std::string* fault) {
  initialize();
  OnigOptionType flags = ONIG_OPTION_NONE;
  if (options & option::ignore_case) flags |= ONIG_OPTION_IGNORECASE;
  if (options & option::multi_line) flags |= ONIG_OPTION_MULTILINE;
  if (options & option::extended) flags |= ONIG_OPTION_EXTEND;
  regex::valid_utf8 const valid({first, static_cast<std::size_t>(last - first)});
  OnigErrorInfo info{};
  int const error = new_regex(&regex_, bytes(valid.data()), bytes(valid.data() + valid.size()),
                              flags, ONIG_ENCODING_UTF8, ONIG_SYNTAX_RUBY, &info);
  if (error == ONIG_NORMAL) return;
  regex_ = nullptr;
  std::string const reason = message(error, info);
  if (fault)
    *fault = reason;
  else
    platform::log_text("regex error: " + reason + "\n");
}

ptrn_t::~ptrn_t() {
  onig_free(regex_);
}

namespace {

constexpr double patience = 0.25;  // seconds of work for one text

class format : private regex::replacement_visitor {
 public:
  format(char const* indent, std::string& out) : indent_(indent), out_(out) {}

  void expand(regex::replacement const& tree, std::string_view text, OnigRegion const& region) {
    case_mode = next_char_case = regex::as_is;
    text_ = text;
    region_ = &region;
    visit(tree);
  }

 private:
  bool is_set(unsigned group) const override {
    return group < static_cast<unsigned>(region_->num_regs) && region_->beg[group] >= 0;
  }
  void put_text(std::string const& utf8) override { put(utf8); }
  void put_newline() override { (out_ += '\n') += indent_; }
  void put_group(unsigned group) override {
    auto const begin = static_cast<std::size_t>(region_->beg[group]);
    put(text_.substr(begin, static_cast<std::size_t>(region_->end[group]) - begin));
  }
  void put(std::string_view run) { regex::append_with_case(out_, run, case_mode, next_char_case); }

  char const* indent_;
  std::string& out_;
  std::string_view text_;
  OnigRegion const* region_ = nullptr;
};

}  // namespace

std::unique_ptr<regex::replacement const> parsed_replacement(std::string_view format) {
  auto result = regex::parse_replacement(format);
  if (!result) platform::log_text("error in format string: " + std::string(format) + "\n");
  return result;
}

std::string replaced(std::string_view text, regex::replacement const* with, ptrn_t const& ptrn,
                     option::type options, char const* indent, bool& gave_up) {
  if (!ptrn.regex() || with == nullptr) return {};
  regex::valid_utf8 const valid(text);
  std::string out;
  format expand(indent, out);
  OnigUChar const* const first = bytes(valid.data());
  OnigUChar const* const last = first + valid.size();
  OnigRegion* const region = onig_region_new();
  std::size_t pos = 0;
  std::clock_t const begun = std::clock();
  while (true) {
    int const found = search_within(retries_per_match, ptrn.regex(), first, last, first + pos,
                                    region, ONIG_OPTION_NONE);
    double const seconds = static_cast<double>(std::clock() - begun) / CLOCKS_PER_SEC;
    gave_up = regex::onig_library::gave_up(found) || seconds > patience;
    if (found < 0 || gave_up) break;
    auto const begin = static_cast<std::size_t>(region->beg[0]);
    auto const end = static_cast<std::size_t>(region->end[0]);
    out += text.substr(pos, begin - pos);
    expand.expand(*with, text, *region);
    pos = end;
    if (begin == end) {
      if (pos == text.size()) break;
      // On by a character, as a search can't begin within one.
      std::size_t const length = valid.length_at(pos);
      out += text.substr(pos, length);
      pos += length;
    }
    if (!(options & option::global)) break;
  }
  onig_region_free(region, 1);
  if (gave_up) return std::string(text);
  return out += text.substr(pos);
}

}  // namespace onig

onig::option::type snippet::options_from_string(std::string_view letters) {
  onig::option::type result = onig::option::none;
  for (char letter : letters) {
    if (letter == 'g') result |= onig::option::global;
    if (letter == 'm') result |= onig::option::multi_line;
    if (letter == 'i') result |= onig::option::ignore_case;
    if (letter == 'e') result |= onig::option::extended;
  }
  return result;
}
