// What a walk does with each member or port that it comes to.
#pragma once

#include "core/number.h"

namespace adp {

/**
 * Refers to a callable that lives as long as the walk. The walks take this and are no templates, so that there is one
 * of each however many callers there are.
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
