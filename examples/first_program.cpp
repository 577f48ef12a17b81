// Lists the domains and resets one of them before a run.
#include <moxel/client.h>

#include <iostream>

int main() try {
  moxel::client::Root root;
  for (const auto& domain : root.Domaines()) std::cout << domain.key() << '\n';
  root.Domaines()["Sales"].Initialize(1, 1);
} catch (const moxel::AutomationError& error) {
  std::cerr << error.number() << ' ' << moxel::ToUtf8(error.source()) << ": " << error.what() << '\n';
  return 1;
}
