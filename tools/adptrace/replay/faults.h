/**
 * @file faults.h
 * A library that crashes, on a recording that is false or as it did when it was recorded, leaves a sentence.
 */
#pragma once

#include "tools/adptrace/recording/recording.h"

namespace adptrace::replay {

/** The call that is under way as long as the object lives. */
class UnderWay {
  public:
    explicit UnderWay(const Call &call);
    ~UnderWay();
    UnderWay(const UnderWay &) = delete;
    UnderWay &operator=(const UnderWay &) = delete;

  private:
    const Call *before_;
};

/**
 * From now on a crash names the call that is under way and ends the process with @p status.
 *
 * @param status  negative: the process ends by the signal
 */
void report_crashes(int status);

}  // namespace adptrace::replay
