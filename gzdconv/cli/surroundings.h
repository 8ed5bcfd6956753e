// The process among others: its standard streams, and the signals that would end it.
#ifndef GZDCONV_SURROUNDINGS_H
#define GZDCONV_SURROUNDINGS_H

#include <csignal>
#include <string_view>

namespace gzdconv {

// To be called first of all. Opens standard streams that are closed on the null device, so that no
// file of the run gets their numbers. Makes broken pipes and limits of file sizes come back as
// failed writes. From then on a signal that ends the run removes the file of remove_at_signal().
void prepare_process();

// Holds those signals back while it lives.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

// Names the file that is not to outlive the run; "" for none. Call it with the signals held back.
void remove_at_signal(std::string_view path);

}  // namespace gzdconv

#endif
