// The superuser may read and write everything; a test of permissions takes it to be someone else while this lives.
#pragma once

#include <unistd.h>

namespace orb::test {

class OrdinaryUser {
 public:
  OrdinaryUser() : before(geteuid()), isOrdinary(before != 0 || seteuid(65534) == 0) {}
  OrdinaryUser(OrdinaryUser const&) = delete;
  OrdinaryUser& operator=(OrdinaryUser const&) = delete;
  ~OrdinaryUser() {
    if (geteuid() != before && seteuid(before) != 0) _exit(1);
  }

  bool IsOrdinary() const { return isOrdinary; }

 private:
  uid_t before;
  bool isOrdinary;
};

}  // namespace orb::test
