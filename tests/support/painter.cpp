#include <cstdlib>

#include <unistd.h>

#include "support/x_client.h"

// A program with one window that shows a pattern: x y width height seed. Runs until it is ended.
int main(int argc, char** argv) {
  if (argc != 6) return EXIT_FAILURE;
  const auto number = [argv](int index) { return std::atoi(argv[index]); };
  velicor::test::XClient client(std::getenv("DISPLAY"));
  client.showPattern({number(1), number(2), number(3), number(4)}, {number(5)});
  client.setNumber(client.root(), "VELICOR_PAINTER_" + std::to_string(number(5)), 1);
  while (true)
    pause();
}
