#pragma once

#include "tests/support/RawDb.h"

#include <string>

namespace qfc::test {

// From now on all tags can be written, and read except while the condition holds: a view stands for their table, whose
// rows lie in KEPT_TAGS.
inline void RefuseReadsOfTags(const std::string& library, const std::string& whileTrue) {
    RawDb(library).Exec(
        "alter table LIB_TAG_TABLE rename to KEPT_TAGS;"
        "create view LIB_TAG_TABLE as select * from KEPT_TAGS union all select abs(LEAST), null, null, null, null, "
        "null, "
        "null, null from (select -9223372036854775807 - 1 as LEAST from sqlite_master where " +
        whileTrue +
        " limit 1);"
        "create trigger WRITE_TAG instead of insert on LIB_TAG_TABLE begin replace into KEPT_TAGS values "
        "(new.TAG_NAME, "
        "new.CATEGORY_GUID, new.TAG_TYPE, new.TAG_CHECKED, new.TAG_DELETABLE, new.TAG_PICTURE_SIZE, "
        "new.TAG_PICTURE_DATA, new.TAG_GUID); end;"
        "create trigger DELETE_TAG instead of delete on LIB_TAG_TABLE begin delete from KEPT_TAGS where TAG_GUID = "
        "old.TAG_GUID; end");
}

inline void AllowReadsOfTags(const std::string& library) {
    RawDb(library).Exec("drop view LIB_TAG_TABLE; alter table KEPT_TAGS rename to LIB_TAG_TABLE");
}

}  // namespace qfc::test
