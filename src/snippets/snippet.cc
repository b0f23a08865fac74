#include "snippets/snippet.h"

#include <algorithm>
#include <map>

#include "platform/utf.h"

namespace snippet {
namespace {

/// The stops of each index, the index of a stop that contains others after theirs.
std::vector<std::vector<std::size_t>> groups_of(std::vector<tab_stop_t> const& stops) {
  std::map<int, std::size_t> number;
  std::vector<std::vector<std::size_t>> groups;
  for (std::size_t i = 0; i < stops.size(); ++i) {
    auto const [found, is_new] = number.try_emplace(stops[i].index, groups.size());
    if (is_new) groups.emplace_back();
    groups[found->second].push_back(i);
  }
  // Of each group, the groups that stand in it.
  std::vector<std::vector<std::size_t>> inner(groups.size());
  for (auto const& stop : stops)
    if (stop.parent != tab_stop_t::no_parent)
      inner[number[stops[stop.parent].index]].push_back(number[stop.index]);

  std::vector<std::vector<std::size_t>> ordered;
  std::vector<std::size_t> next_inner(groups.size());
  std::vector<bool> seen(groups.size());
  std::vector<std::size_t> path;
  for (std::size_t root = 0; root < groups.size(); ++root) {
    if (!seen[root]) path.push_back(root);
    seen[root] = true;
    while (!path.empty()) {
      std::size_t const group = path.back();
      if (next_inner[group] < inner[group].size()) {
        std::size_t const child = inner[group][next_inner[group]++];
        if (!seen[child]) path.push_back(child);
        seen[child] = true;
      } else {
        ordered.push_back(groups[group]);
        path.pop_back();
      }
    }
  }
  return ordered;
}

std::vector<std::size_t> places_of(std::vector<tab_stop_t> const& stops) {
  std::vector<std::pair<std::size_t, std::size_t>> ranked;
  for (std::size_t i = 0; i < stops.size(); ++i) {
    ranked.emplace_back(stops[i].first.rank, 2 * i);
    ranked.emplace_back(stops[i].last.rank, 2 * i + 1);
  }
  std::sort(ranked.begin(), ranked.end());
  std::vector<std::size_t> places;
  for (auto const& [rank, place] : ranked) places.push_back(place);
  return places;
}

bool is_low_surrogate(std::u16string_view text, std::size_t at) {
  return at < text.size() && (text[at] & 0xfc00) == 0xdc00;
}

/// Puts `wanted` in place of `present`, writing only what differs, so that marks in the rest stay
/// where they are. Gives the units that stand there now.
std::size_t write(storage_t& storage, tab_stop_t const& stop, std::u16string_view present,
                  std::u16string_view wanted) {
  auto const differing =
      std::mismatch(present.begin(), present.end(), wanted.begin(), wanted.end());
  auto same = static_cast<std::size_t>(differing.first - present.begin());
  // No character is ever cut, not even for a moment.
  if (is_low_surrogate(present, same) || is_low_surrogate(wanted, same)) --same;
  std::size_t same_end = 0;
  std::size_t const most = std::min(present.size(), wanted.size()) - same;
  while (same_end < most &&
         present[present.size() - 1 - same_end] == wanted[wanted.size() - 1 - same_end])
    ++same_end;
  if (same_end > 0 && is_low_surrogate(wanted, wanted.size() - same_end)) --same_end;
  std::size_t const written = storage.replace(stop.first.offset + same, stop.last.offset - same_end,
                                              wanted.substr(same, wanted.size() - same_end - same));
  return same + written + same_end;
}

}  // namespace

transform_t::transform_t(std::string of, std::string to, std::string letters)
    : regexp(std::move(of)),
      format(std::move(to)),
      options(std::move(letters)),
      flags(options_from_string(options)),
      pattern(regexp.data(), regexp.data() + regexp.size(), flags, &fault),
      replacement(regex::parse_replacement(format)) {
  if (!fault.empty())
    fault = "invalid regular expression " + regexp + ": " + fault;
  else if (replacement == nullptr)
    fault = "invalid format " + format;
}

std::string transform_t::applied_to(std::string_view text, std::string const& indent,
                                    std::string& why_not) const {
  bool gave_up = false;
  std::string result =
      onig::replaced(text, replacement.get(), pattern, flags, indent.c_str(), gave_up);
  if (gave_up) why_not = "the regular expression " + regexp + " takes too long";
  return result;
}

snippet_t::snippet_t(std::vector<tab_stop_t> stops, std::u16string text, std::string indent)
    : stops_(std::move(stops)),
      indent_(std::make_shared<std::string const>(std::move(indent))),
      places_(std::make_shared<std::vector<std::size_t> const>(places_of(stops_))),
      groups_(std::make_shared<std::vector<std::vector<std::size_t>> const>(groups_of(stops_))) {
  buffer_storage_t storage(text);
  for (std::size_t i = 0; i < stops_.size(); ++i)
    if (!stops_[i].is_field) remove_children(i);
  update_mirrors(storage, std::vector<bool>(stops_.size(), true));
  text_ = std::make_shared<std::u16string const>(std::move(text));
  begin();
}

std::size_t snippet_t::length() const {
  std::size_t length = 0;
  for (tab_stop_t const& stop : stops_) length = std::max(length, stop.last.offset);
  return length;
}

std::vector<std::size_t> snippet_t::fields() const {
  std::vector<std::size_t> result;
  for (std::size_t i = 0; i < stops_.size(); ++i)
    if (stops_[i].is_field && !stops_[i].is_removed) result.push_back(i);
  std::sort(result.begin(), result.end(),
            [&](std::size_t a, std::size_t b) { return stops_[a].index < stops_[b].index; });
  return result;
}

bool snippet_t::is_at_end() const {
  return fields().back() == current_;
}

void snippet_t::begin() {
  current_ = fields().front();
}

void snippet_t::next() {
  auto const all = fields();
  auto const at = std::find(all.begin(), all.end(), current_);
  if (at + 1 != all.end()) current_ = at[1];
}

void snippet_t::previous() {
  auto const all = fields();
  auto const at = std::find(all.begin(), all.end(), current_);
  if (at != all.begin()) current_ = at[-1];
}

std::pair<std::size_t, std::size_t> snippet_t::progress() const {
  auto const all = fields();
  auto const at =
      static_cast<std::size_t>(std::find(all.begin(), all.end(), current_) - all.begin());
  bool const has_end = stops_[all.back()].index == end_index;
  return {at + 1, all.size() - (has_end ? 1 : 0)};
}

bool snippet_t::is_inside(std::size_t stop, std::size_t outer) const {
  return stops_[outer].first.rank < stops_[stop].first.rank &&
         stops_[stop].last.rank < stops_[outer].last.rank;
}

/// Gives the stops whose field is gone with them, as those have to be emptied.
std::vector<bool> snippet_t::remove_children(std::size_t stop) {
  std::vector<bool> changed(stops_.size());
  // What is nested in a stop follows it.
  for (std::size_t i = stop + 1; i < stops_.size() && is_inside(i, stop); ++i) {
    if (!stops_[i].is_removed && stops_[i].is_field) changed[i] = true;
    stops_[i].is_removed = true;
  }
  return changed;
}

void snippet_t::mark_with_outer(std::size_t stop, std::vector<bool>& changed) const {
  for (; stop != tab_stop_t::no_parent && !changed[stop]; stop = stops_[stop].parent)
    changed[stop] = true;
}

void snippet_t::shift(std::vector<edit> const& edits) {
  if (edits.empty()) return;
  std::vector<std::ptrdiff_t> growth(stops_.size());
  for (edit const& done : edits) {
    tab_stop_t const& stop = stops_[done.stop];
    growth[done.stop] = static_cast<std::ptrdiff_t>(done.length) -
                        static_cast<std::ptrdiff_t>(stop.last.offset - stop.first.offset);
  }
  std::ptrdiff_t delta = 0;
  for (std::size_t const place : *places_) {
    tab_stop_t& stop = stops_[place / 2];
    bool const is_end = place % 2 != 0;
    if (is_end) delta += growth[place / 2];
    std::size_t& offset = is_end ? stop.last.offset : stop.first.offset;
    offset = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(offset) + delta);
  }
}

void snippet_t::did_replace(storage_t& storage, std::size_t /*offset*/, std::size_t erased,
                            std::size_t inserted) {
  std::vector<bool> changed = remove_children(current_);
  shift({{current_, current().last.offset - current().first.offset - erased + inserted}});
  mark_with_outer(current_, changed);
  update_mirrors(storage, std::move(changed));
}

std::u16string snippet_t::text_for_mirror(tab_stop_t const& mirror, std::u16string const& source) {
  if (!mirror.is_regexp_mirror()) return source;
  return unicode::to_utf16(
      mirror.transform->applied_to(unicode::to_utf8(source), *indent_, fault_));
}

void snippet_t::update_mirrors(storage_t& storage, std::vector<bool> changed) {
  fault_.clear();
  for (auto const& group : *groups_) {
    auto const field =
        std::find_if(group.begin(), group.end(), [&](std::size_t i) { return stops_[i].is_field; });
    if (field == group.end() || !changed[*field]) continue;
    tab_stop_t const& source = stops_[*field];
    std::u16string const text = source.is_removed
                                    ? std::u16string()
                                    : storage.data(source.first.offset, source.last.offset);
    // From the last one on, so that offsets stay what they are.
    std::vector<edit> edits;
    for (auto i = group.rbegin(); i != group.rend(); ++i) {
      tab_stop_t const& mirror = stops_[*i];
      if (mirror.is_field || mirror.is_removed) continue;
      std::u16string const wanted = text_for_mirror(mirror, text);
      std::u16string const present = storage.data(mirror.first.offset, mirror.last.offset);
      if (wanted == present) continue;
      edits.push_back({*i, write(storage, mirror, present, wanted)});
      mark_with_outer(mirror.parent, changed);
    }
    shift(edits);
  }
}

}  // namespace snippet
