#pragma once

#include "commands/output_places.h"

#include <string>
#include <string_view>
#include <vector>

namespace commands {

/// The places in files that the last output named, to walk through one by one. Main thread only.
class output_results {
 public:
  static output_results& shared();

  /// A command begins to print: what an earlier one named is forgotten.
  void begin();
  /// How often that has been called.
  std::size_t runs() const { return runs_; }
  void add(output_place const& place);
  /// The whole output of a command that ran in this folder, in place of begin() and add(). Output
  /// that names no place leaves the earlier ones.
  void take(std::string_view output, std::string const& directory);
  /// This place has been gone to by other means, as by a link.
  void visit(output_place const& place);

  /// Null at the end, or at the beginning: the walk stays where it is.
  output_place const* next();
  output_place const* previous();
  bool is_empty() const { return places_.empty(); }
  std::vector<output_place> const& places() const { return places_; }

 private:
  std::vector<output_place> places_;
  std::size_t runs_ = 0;
  std::size_t at_ = 0;  // how many have been gone to: the present one is the one before
};

}  // namespace commands
