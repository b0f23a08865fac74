#pragma once

namespace documents {

/// The numbers of things without a name. They count up, and start again at 1 when all of them have
/// been given back.
class untitled_numbers {
 public:
  unsigned take() {
    ++taken_;
    return ++last_;
  }
  void give_back() {
    if (taken_ != 0 && --taken_ == 0) last_ = 0;
  }

  /// Those of the untitled documents of this process.
  static untitled_numbers& of_documents() {
    static untitled_numbers instance;
    return instance;
  }

 private:
  unsigned taken_ = 0;
  unsigned last_ = 0;
};

}  // namespace documents
