// SPDX-License-Identifier: MIT

// As a module of another version would be.
extern "C" {
extern const char tessaryBuildTag[];
const char tessaryBuildTag[] = "0.9.0-another";
int answer();
int answer() {
  return 42;
}
}
