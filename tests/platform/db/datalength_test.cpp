// DATALENGTH counts what is stored: every byte of a picture (a PNG holds
// zero bytes from its ninth on) and every character of text, trailing
// blanks included, where LEN leaves them out. The same on both engines.
#include <gtest/gtest.h>

#include "platform/db/connection.h"
#include "temp_db.h"

namespace orv::db {
namespace {

// A PNG's signature and the start of its first chunk: 16 bytes, the ninth
// a zero.
const char* kPictures = R"sql(
CREATE TABLE Pictures (ID INTEGER PRIMARY KEY, Logo BLOB, Caption VARCHAR(20));
INSERT INTO Pictures VALUES (1, X'89504E470D0A1A0A0000000D49484452', 'Élise  '), (2, NULL, '');
)sql";

TEST(DataLength, BytesOfAPictureAndCharactersOfTextOnEachEngine) {
  testing::EachEngine(kPictures).Run([](Connection& conn) {
    auto rows = conn.Query(
        "SELECT ID, DATALENGTH(Logo) AS Bytes, DATALENGTH(Caption) AS Chars, LEN(Caption) AS Letters "
        "FROM Pictures ORDER BY ID");
    ASSERT_EQ(rows->RowCount(), 2u);
    EXPECT_EQ(CStr(rows->Get(0, 1)), "16");
    EXPECT_EQ(CStr(rows->Get(0, 2)), "7");
    EXPECT_EQ(CStr(rows->Get(0, 3)), "5");
    EXPECT_TRUE(rows->Get(1, 1).IsNull());
    EXPECT_EQ(CStr(rows->Get(1, 2)), "0");
  });
}

}  // namespace
}  // namespace orv::db
