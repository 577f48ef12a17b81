// Reads a variable through the component and ends. start_bench.cpp times the process.
#include <moxel/client.h>

int main() try {
  moxel::client::RootVar root;
  return root.RecupVariable(u"Sales", u"", u"Region").Value().is_empty() ? 1 : 0;
} catch (const moxel::AutomationError&) {
  return 1;
}
