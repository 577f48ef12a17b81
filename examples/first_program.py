import sys

import moxel

try:
    root = moxel.Root()
    for domain in root.Domaines:
        print(domain.key)
    root.Domaines["Sales"].Initialize(1, 1)
except moxel.Error as error:
    sys.exit(f"{error.number} {error.source}: {error.description}")
