/**
 * @file refusal.h
 * A line that cannot be executed, and the sentence that says why.
 */
#ifndef ADPSH_REFUSAL_H
#define ADPSH_REFUSAL_H

#include <stdexcept>

namespace adpsh {

class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace adpsh

#endif
