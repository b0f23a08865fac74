#include "commands/output_results.h"

#include <algorithm>

namespace commands {
namespace {

constexpr std::size_t most_places = 100'000;

bool is_same(output_place const& a, output_place const& b) {
  return a.line == b.line && a.column == b.column && a.file == b.file;
}

}  // namespace

output_results& output_results::shared() {
  static auto& results = *new output_results;
  return results;
}

void output_results::begin() {
  ++runs_;
  places_.clear();
  at_ = 0;
}

// Tools name a place again when they show it: only the first counts.
void output_results::add(output_place const& place) {
  if (places_.size() >= most_places) return;
  if (places_.empty() || !is_same(places_.back(), place)) places_.push_back(place);
}

void output_results::take(std::string_view output, std::string const& directory) {
  place_finder finder(directory);
  std::vector<output_place> found;
  while (!output.empty() && found.size() < most_places) {
    std::string_view const line = output.substr(0, output.find('\n'));
    output.remove_prefix(std::min(line.size() + 1, output.size()));
    if (auto const place = finder.place_in(line)) found.push_back(*place);
  }
  if (found.empty()) return;
  begin();
  for (output_place const& place : found) add(place);
}

void output_results::visit(output_place const& place) {
  auto const it = std::find_if(places_.begin(), places_.end(),
                               [&](output_place const& each) { return is_same(each, place); });
  if (it != places_.end()) at_ = static_cast<std::size_t>(it - places_.begin()) + 1;
}

output_place const* output_results::next() {
  return at_ == places_.size() ? nullptr : &places_[at_++];
}

output_place const* output_results::previous() {
  if (at_ < 2) return nullptr;
  return &places_[--at_ - 1];
}

}  // namespace commands
