#include <cstdio>

int main(int argc, char** argv) {
  std::fprintf(stderr, "orvenda-reports: no commands yet\n");
  return 2;
}
