#pragma once

#include "platform/find_panel.h"
#include "search/match_survey.h"
#include "search/text_query.h"
#include "text/views/view.h"

#include <optional>
#include <string>
#include <utility>

namespace search {

/// Finding in the text of a view, as WynFindManager's options say and with the find pasteboard's
/// text. All of these may handle events while a search takes long (patient_work.h); if the text
/// changes meanwhile that counts as cancelled. The view must not be null.

/// How a search or a replacement ended; `error` is set if a pattern or a replacement is wrong.
struct find_answer {
  search_end end = search_end::not_found;
  std::string error;
};

/// What was found: units of the whole text or, where it is known, places in it. Searching changes
/// nothing, so that no undo group and no other scope need span the wait.
struct found_match : find_answer {
  std::size_t first = 0, last = 0;
  std::optional<text_range> place = {};
};

/// What is to take the selection's place.
struct found_replacement : find_answer {
  std::u16string text;
};

/// In all of the text or, with `within`, as if that were all.
found_match find_in_view(text::view& view, bool backward,
                         std::optional<text_range> within = std::nullopt);
/// Selects what was found, unfolds it and asks for it to be scrolled into sight.
void select_match(text::view& view, found_match const& match);
found_replacement replacement_for_selection(text::view& view);

/// Whether what is selected is a match as a whole; a pattern is tried for some milliseconds.
bool selection_is_match(text::view& view, std::shared_ptr<text_query const> query);
/// What a pattern's match that is selected would be replaced by; nothing if the selection is none,
/// or if that takes more than some milliseconds. The replacement text must be right.
std::optional<std::u16string> preview_of_replacement(text::view& view,
                                                     std::shared_ptr<text_query const> query,
                                                     std::string const& replacement);
/// A pattern that matches just this text.
std::u16string pattern_for(std::u16string_view text);

query_options query_options_of(platform::find_panel_values const& values);

/// Whether something was found. What is wrong is logged, with `prefix` before it.
bool log_and_tell(find_answer const& answer, char const* prefix);

/// False without a selection.
bool view_copy_selection_to_findpboard(text::view* view);
bool view_copy_selection_to_replacepboard(text::view* view);

/// Incremental search; case counts if the string has a capital letter. The match's start, or the
/// text's end if there is none. Forward from the selection's end or start, and then from the text's
/// start up to the selection.
text::iterator find_forward(text::view* view, std::u16string const& string, bool from_end);
/// Backward from the selection's start; with `from_start` false a string that has grown since the
/// selection was found by it may stay where it is.
text::iterator find_backward(text::view* view, std::u16string const& string, bool from_start);

}  // namespace search
