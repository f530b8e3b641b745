// A watcher that puts together the account of each frame.
#pragma once

#include <vector>

#include "vdevice/chip/account/account.h"

namespace vdevice::chip {

class Recorder : public Watcher {
  public:
    /** The tables must outlive it. */
    explicit Recorder(const Tables &tables) : tables_{tables} {}

  protected:
    /** Whether somebody listens at all. Without, a frame costs next to nothing. */
    virtual bool is_listening() const { return true; }
    /** Whether the frame's account is wanted. */
    virtual bool wants(const Passage & /*frame*/, const std::vector<Copy> & /*copies*/) { return true; }
    /** A frame passes while nobody listens. */
    virtual void unheard(const Passage & /*frame*/) {}
    virtual void tell(Account account) = 0;

  private:
    void begun() override;
    void passed(const Passage &frame) override;
    void left(int port, const Frame &copy, const Dispatch &dispatch) override;
    void queued(int port, const Frame &copy, const Dispatch &dispatch) override;
    void lost(int port, const Frame &copy, const Dispatch &dispatch, Lost reason) override;
    void note(int port, const Frame &copy, const Dispatch &dispatch, Fate fate, Lost reason);

    const Tables &tables_;
    std::vector<Copy> copies_;  /**< of the frame on its way */
    bool is_recording_ = false; /**< a frame is on its way, and somebody listens */
};

}  // namespace vdevice::chip
