// SPDX-License-Identifier: MIT

// As a module from before there were tags would be.
extern "C" {
int answer();
int answer() {
  return 42;
}
}
