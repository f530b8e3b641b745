// The step of a walk: what is done with each member or port.
#pragma once

#include "core/number.h"

namespace adp {

/**
 * A reference to a callable, which must live as long as the walk. With it the walks are no templates, and the library
 * has one copy of each.
 */
template <typename Argument>
class StepRef {
  public:
    template <typename Callable>
    StepRef(const Callable &callable)
        : callable_(&callable), call_([](const void *step, Argument argument) -> int32_t {
              return (*static_cast<const Callable *>(step))(argument);
          }) {}

    int32_t operator()(Argument argument) const { return call_(callable_, argument); }

  private:
    const void *callable_;
    int32_t (*call_)(const void *, Argument);
};

using MemberStep = StepRef<Intf>;
using PortStep = StepRef<PhyPort>;

}  // namespace adp
