"""Lets scripts/check-includes judge small trees that break one rule each."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = sys.argv.pop(1)


class CheckIncludes(unittest.TestCase):
    def judge(self, files, public=None):
        with tempfile.TemporaryDirectory() as name:
            root = pathlib.Path(name)
            for path, text in files.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text)
            command = [sys.executable, CHECK, "--root", name]
            if public is not None:
                (root / "public.txt").write_text("\n".join(public))
                command += ["--public", str(root / "public.txt")]
            result = subprocess.run(command, capture_output=True, text=True, check=False)
            return result.returncode, result.stdout

    def assert_refused(self, files, complaint, public=None):
        code, output = self.judge(files, public)
        self.assertEqual(code, 1, output)
        self.assertIn(complaint, output)

    def test_looking_down_is_fine(self):
        code, output = self.judge({
            "platform/a.h": "#include <string>\n", "platform/a_posix.cpp": "#include <unistd.h>\n",
            "db/b.h": '#include "platform/a.h"\n', "db/CppSQLite3DB.cpp": "#include <sqlite3.h>\n",
            "items/c.h": '#include "db/b.h"\n', "folders/d.h": '#include "items/c.h"\n',
            "api/names/n.h": '#include "platform/a.h"\n', "folders/e.cpp": '#include "api/names/n.h"\n'})
        self.assertEqual(code, 0, output)

    def test_looking_up_is_refused(self):
        self.assert_refused({"db/b.h": '#include "service/s.h"\n', "service/s.h": ""}, "db may not include service")
        self.assert_refused({"items/c.h": '#include "api/p.h"\n', "api/p.h": ""}, "model may not include api")
        self.assert_refused({"api/names/n.h": '#include "db/b.h"\n', "db/b.h": ""}, "api/names may not include db")

    def test_records_are_for_every_floor_and_know_the_ground_floor_only(self):
        files = {"platform/a.h": "", "tags/TagRecords.h": '#include "platform/a.h"\n',
                 "db/b.h": '#include "tags/TagRecords.h"\n'}
        code, output = self.judge(files)
        self.assertEqual(code, 0, output)
        self.assert_refused(files | {"db/b.h": '#include "tags/Other.h"\n', "tags/Other.h": ""},
                            "db may not include tags")
        self.assert_refused({"tags/TagRecords.h": '#include "db/b.h"\n', "db/b.h": ""}, "ground floor only")

    def test_missing_files_are_refused(self):
        self.assert_refused({"db/b.h": '#include "b2.h"\n'}, "no such file")

    def test_the_database_header_stays_in_the_access_layer(self):
        self.assert_refused({"db/Other.cpp": "#include <sqlite3.h>\n"}, "access layer")
        self.assert_refused({"hosts/qfc/main.cpp": "#include <sqlite3.h>\n"}, "access layer")
        self.assertEqual(self.judge({"tests/db/t.cpp": "#include <sqlite3.h>\n"})[0], 0)

    def test_system_headers_stay_in_the_ground_floor(self):
        for header in ("unistd.h", "sys/stat.h", "pthread.h", "iconv.h"):
            self.assert_refused({"service/s.cpp": f"#include <{header}>\n"}, "platform/*_posix.cpp")
            self.assert_refused({"platform/s.cpp": f"#include <{header}>\n"}, "platform/*_posix.cpp")
        self.assertEqual(self.judge({"hosts/qfc/main.cpp": "#include <unistd.h>\n"})[0], 0)

    def test_headers_name_no_third_party_header(self):
        self.assert_refused({"platform/z.h": "#include <zstd.h>\n"}, "third-party")
        self.assert_refused({"db/f.h": "#include <fmt/format.h>\n"}, "third-party")

    def test_hosts_include_installed_headers_only(self):
        files = {"hosts/qfc/main.cpp": '#include "db/b.h"\n', "db/b.h": ""}
        self.assert_refused(files, "installed headers only", public=["db/other.h"])
        self.assertEqual(self.judge(files, public=["db/b.h"])[0], 0)

    def test_installed_headers_need_only_installed_ones(self):
        self.assert_refused({"db/b.h": '#include "db/c.h"\n', "db/c.h": ""}, "not installed", public=["db/b.h"])

    def test_cycles_are_found(self):
        self.assert_refused({"db/a.h": '#include "db/b.h"\n', "db/b.h": '#include "db/c.h"\n',
                             "db/c.h": '#include "db/a.h"\n'}, "cycle: db/a.h -> db/b.h -> db/c.h -> db/a.h")
        self.assert_refused({"db/a.h": '#include "db/a.h"\n'}, "cycle")

    def test_an_empty_tree_is_no_success(self):
        self.assertEqual(self.judge({})[0], 1)


if __name__ == "__main__":
    unittest.main()
