"""The layering check accepts what the table allows and names every include that it does not."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "Scripts/check-layering"


def check(files):
    """Runs the check over a tree of these files; returns its exit code and what it complained about."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        run = subprocess.run([sys.executable, SCRIPT, folder], capture_output=True, text=True, check=False)
        return run.returncode, run.stderr


class Layering(unittest.TestCase):
    def accepts(self, name, *includes):
        code, complaints = check({name: "".join(f"#include {include}\n" for include in includes)})
        self.assertEqual((code, complaints), (0, ""))

    def refuses(self, name, include):
        code, complaints = check({name: f"#pragma once\n#include {include}\n"})
        self.assertEqual(code, 1)
        self.assertTrue(complaints.startswith(f"{name}:2: "), complaints)

    def test_what_the_table_allows_passes(self):
        self.accepts("Storage/AppFolder.h", '"Tallyfoot/Platform/Clock.h"', '"Tallyfoot/Export.h"', "<string>", "<zip.h>")
        self.accepts("Facade/Tallyfoot.cpp", '"Tallyfoot/Facade/Tallyfoot.h"', '"Tallyfoot/Recording/EventRecorder.h"')
        self.accepts("Tallyfoot.h", '"Tallyfoot/Facade/Tallyfoot.h"')
        self.accepts("Recording/Timing/Repeater.h", '"Tallyfoot/Platform/Dispatch.h"')

    def test_a_room_above_is_refused(self):
        self.refuses("Storage/AppFolder.h", '"Tallyfoot/Recording/EventRecorder.h"')
        self.refuses("Events/Event.h", '"Tallyfoot/Storage/AppFolder.h"')
        self.refuses("Capture/Gestures.cpp", '"Tallyfoot/Recording/EventRecorder.h"')

    def test_the_deepest_folder_decides(self):
        self.refuses("Recording/Timing/Repeater.h", '"Tallyfoot/Storage/AppFolder.h"')
        self.refuses("Facade/Configuration/Size.h", '"Tallyfoot/Events/Event.h"')
        self.refuses("Platform/Clock.h", '"Tallyfoot/Platform/Posix/PosixClock.h"')

    def test_below_the_facade_nobody_includes_it(self):
        self.refuses("Capture/Gestures.cpp", '"Tallyfoot/Facade/Tallyfoot.h"')
        self.refuses("Recording/EventRecorder.cpp", "<Tallyfoot/Tallyfoot.h>")

    def test_upload_may_use_the_text_helpers_of_events_only(self):
        self.accepts("Upload/UploadManager.cpp", '"Tallyfoot/Events/Text.h"', '"Tallyfoot/Events/JSON.h"')
        self.refuses("Upload/UploadManager.cpp", '"Tallyfoot/Events/Event.h"')

    def test_the_platform_includes_the_standard_library_only(self):
        self.accepts("Platform/Clock.h", "<chrono>")
        self.accepts("Platform/Posix/PosixClock.cpp", "<unistd.h>")
        self.refuses("Platform/Clock.h", "<unistd.h>")
        self.refuses("Platform/PropertyList.h", "<plist/plist.h>")

    def test_a_path_of_another_form_is_refused(self):
        self.refuses("Storage/AppFolder.cpp", '"AppFolder.h"')

    def test_a_folder_without_a_row_is_refused(self):
        code, complaints = check({"Attic/Old.h": ""})
        self.assertEqual(code, 1)
        self.assertIn("Attic/Old.h", complaints)

    def test_an_empty_tree_is_refused(self):
        self.assertEqual(check({})[0], 1)


if __name__ == "__main__":
    unittest.main()
