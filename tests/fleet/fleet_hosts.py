"""Simulated hosts with tavrenix-lab-monitor, and what befalls them."""

import json
import os
import subprocess

ACTIVE, FAILED = 0, 128


class Host:
    """Four units of four paths, over two ports of its own and the two ports of each controller of one array."""

    def __init__(self, number, array, folder):
        self.name = f"host{number:02}"
        self.image = folder / f"{self.name}.json"
        self.ports = [f"21000000{number:06x}{port:02x}" for port in range(2)]
        self.targets = [f"5006{array}00000000{port}" for port in range(2)]
        self.cut = set()  # ports that are down, of either end
        self.units = 4
        self.generation = 1
        self.commands = 0
        self.process = None

    def write(self):
        entries = [path for unit in range(self.units) for path in self.paths(unit)]
        entries += [self.unit(unit) for unit in range(self.units)]
        document = {"generation": self.generation, "kernelRelease": "6.1.0", "entries": entries}
        temporary = self.image.with_suffix(".new")
        temporary.write_text(json.dumps(document))
        os.replace(temporary, self.image)

    def change(self, **facts):
        """Sets attributes, as an event of the kernel would."""
        for name, value in facts.items():
            setattr(self, name, value)
        self.generation += 1
        self.write()

    def paths(self, unit):
        for number in range(4):
            port, target = self.ports[number // 2], self.targets[number % 2]
            failed = bool({port, target} & self.cut)
            identifier = f"{number + 1:02X}{unit + 1:02X}"
            yield {"id": 1000 + 10 * unit + number, "class": "KsSCSIHierarchicalLogicalUnit",
                   "properties": {"Logical Unit Path Identifier": {"$data": identifier}},
                   "statistics": {"sent": self.commands << 12, "received": self.commands << 12,
                                  "commands": self.commands, "state": FAILED if failed else ACTIVE},
                   "details": {"device": f"sd{chr(97 + 4 * unit + number)}", "group": 1, "failures": 0,
                               "driverState": "failed" if failed else "active", "deviceState": "running",
                               "hostPort": port, "targetPort": target}}

    def unit(self, unit):
        return {"id": 100 + unit, "class": "KsSCSIMultipathedLogicalUnit",
                "parents": [1000 + 10 * unit + number for number in range(4)],
                "properties": {"Logical Unit Unique Identifier": {"$data": f"{self.name.encode().hex()}{unit:02X}"},
                               "Vendor Identification": "EXAMPLE", "Product Identification": "Array",
                               "Load Balancing Algorithm": "Modified Round Robin", "Batch Count": 1,
                               "Peripheral Device Type": 0},
                "statistics": {"sent": self.commands << 14, "received": self.commands << 14,
                               "commands": 4 * self.commands},
                "details": {"device": f"dm-{unit}", "queueing": False}}

    def start(self, address="127.0.0.1:0"):
        """Serves its metrics. Returns the address and port."""
        self.write()
        self.process = subprocess.Popen(["tavrenix-lab-monitor", str(self.image), "metrics", "--listen", address],
                                        stdout=subprocess.PIPE, text=True)
        return self.process.stdout.readline().split("/")[2]

    def stop(self):
        if self.process:
            self.process.terminate()
            self.process.wait()
            self.process = None
