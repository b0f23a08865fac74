#include "search/scope_filter.h"

#include "bundles/BundleManager.h"
#include "bundles/language_catalogue.h"
#include "grammar/line_parser.h"
#include "platform/utf.h"
#include "settings/store.h"
#include "styles/language_choice.h"

#include <algorithm>
#include <unordered_map>

namespace search {
namespace {

// As views look at it.
constexpr std::size_t first_line_units = 4096;

}  // namespace

std::shared_ptr<scope_filter const> scope_filter::make(std::string const& selector,
                                                       std::string& fault) {
  auto made = std::make_shared<scope_filter>();
  made->selector_ = scope::parse_selector(selector, &fault);
  if (made->selector_ == nullptr) return nullptr;
  BundleManager& bundles = BundleManager::sharedInstance();
  made->rules_ = bundles::language_catalogue(bundles);
  made->languages_ = bundles.languageEntries();
  for (auto const& item : bundles.bundleItemsOfKind(bundles::item_kind::language))
    made->uuids_.push_back(item->UUID());
  made->bindings_ = settings::store().array("WynLanguageFileBindings");
  made->default_language_ = settings::store().string("WynDefaultLanguage");
  return made;
}

unsigned scope_filter::rule_for(std::string const& path, text::unit_view text) const {
  text::unit_view const line =
      text.substr(0, std::min(text.find(u'\n'), text.size())).substr(0, first_line_units);
  std::string const uuid = language_choice::for_file(path, unicode::to_utf8(line), languages_,
                                                     bindings_, default_language_);
  auto const found = std::find(uuids_.begin(), uuids_.end(), uuid);
  return uuid.empty() || found == uuids_.end() ? grammar::catalogue::none
                                               : static_cast<unsigned>(found - uuids_.begin());
}

std::vector<bool> scope_filter::in_scope(text::unit_view text, std::string const& path,
                                         std::vector<text::pos> const& places,
                                         std::atomic<bool> const& cancelled) const {
  unsigned const rule = rule_for(path, text);
  if (rules_ == nullptr || rule >= rules_->size()) {
    std::vector<std::string> const none;
    return std::vector(places.size(), scope::compare_selector(none).handle_node(*selector_) >= 0);
  }
  std::vector<bool> result(places.size());
  auto const paths = std::make_shared<grammar::path_tree>(*rules_, rule);
  grammar::line_parser parser(rules_, rule, paths);
  parser.setup_stack(0);
  grammar::reference_stack references;
  grammar::line_tokens tokens;
  std::unordered_map<grammar::path_tree::id, bool> known;
  auto const applies = [&](grammar::path_tree::id id) {
    auto const [entry, is_new] = known.emplace(id, false);
    if (is_new) {
      auto const scopes = paths->scopes(id);
      entry->second = scope::compare_selector(scopes).handle_node(*selector_) >= 0;
    }
    return entry->second;
  };
  std::size_t place = 0, begin = 0;
  for (std::uint32_t line = 0; place < places.size(); ++line) {
    std::size_t const feed = std::min(text.find(u'\n', begin), text.size());
    bool const is_last = feed == text.size();
    if (!parser.parse_line(text.substr(begin, feed - begin + !is_last), is_last, tokens, references,
                           cancelled))
      break;
    for (; place < places.size() && places[place].line == line; ++place)
      result[place] = applies(tokens.at(places[place].column).path);
    if (is_last) break;
    begin = feed + 1;
  }
  return result;
}

}  // namespace search
