// What happens when memory runs out: every operation that may allocate is stopped at each of its allocations, once and
// from there on; it must raise Qor::MemoryException, leave its object as it was, and leave nothing behind.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "core/byte_buffer.h"
#include "core/exception.h"
#include "core/product_record.h"
#include "support/allocation_system.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::Content;
using testing::ReferencesOf;
using testing::Sample;
using testing::SystemInForce;
using Failing = AllocationSystem::Failing;

constexpr std::uint64_t mostAllocations = 200;

// Runs `check` with every allocation failing in turn until the operation gets through; answers how often it was
// stopped. `check` makes its objects, calls `arm`, runs the operation, calls `disarm` and answers whether it was
// stopped.
class Stopper {
 public:
  int Run(Failing how, const std::function<bool(Stopper&)>& check) {
    int stopped = 0;
    for (point = 1; point <= mostAllocations; ++point) {
      failing = how;
      const bool wasStopped = check(*this);
      memory.FailNever();
      EXPECT_EQ(0, memory.Outstanding()) << "left behind when allocation " << point << " failed";
      if (!wasStopped) return stopped;
      ++stopped;
    }
    ADD_FAILURE() << "never gets through";
    return stopped;
  }

  // Runs `operation` with the failure in force; true when it was stopped.
  bool Stops(const std::function<void()>& operation) {
    memory.FailAt(point, failing);
    bool stopped = false;
    try {
      operation();
    } catch (const Qor::MemoryException& exception) {
      stopped = true;
      EXPECT_EQ(0u, exception.Code());
      EXPECT_TRUE(exception.Message().IsEmpty());
    }
    memory.FailNever();
    return stopped;
  }

 private:
  AllocationSystem memory;
  SystemInForce inForce{memory};
  std::uint64_t point = 1;
  Failing failing = Failing::never;
};

constexpr Failing everyWay[] = {Failing::once, Failing::fromThenOn};

// Operations on a String of 49 characters (a full block).

struct StringOperation {
  const char* name;
  void (*run)(String& text, const String& exclusive);
};

const StringOperation stringOperations[] = {
    {"AssignText", [](String& text, const String&) { text = Sample(60).c_str(); }},
    {"AssignOwnPiece", [](String& text, const String&) { text = text.Text(); }},
    {"AssignExclusive", [](String& text, const String& exclusive) { text = exclusive; }},
    {"SetAt", [](String& text, const String&) { text.IsEmpty() ? text.Append('x') : text.SetAt(0, 'x'); }},
    {"CutAt", [](String& text, const String&) { text.IsEmpty() ? text.Append('x') : text.SetAt(1, '\0'); }},
    {"AppendString", [](String& text, const String& exclusive) { text.Append(exclusive); }},
    {"AppendText", [](String& text, const String&) { text.Append("abc"); }},
    {"AppendEmptyText", [](String& text, const String&) { text.Append(""); }},
    {"AppendItself", [](String& text, const String&) { text.IsEmpty() ? text.Append("x") : text.Append(text); }},
    {"AppendCharacter", [](String& text, const String&) { text.Append('x'); }},
    {"Insert", [](String& text, const String&) { text.Insert("abc", 0, 3); }},
    {"InsertOwnPiece", [](String& text, const String&) { text.Insert(text.Characters(), 0, text.Length()); }},
    {"JoinString", [](String& text, const String& exclusive) { text.JoinPath(exclusive); }},
    {"JoinLongString", [](String& text, const String&) { text.JoinPath(String(Sample(120).c_str())); }},
    {"JoinItself",
     [](String& text, const String& exclusive) { text.IsEmpty() ? text.JoinPath(exclusive) : text.JoinPath(text); }},
    {"JoinText", [](String& text, const String&) { text.JoinPath("abc"); }},
    {"JoinLongText", [](String& text, const String&) { text.JoinPath(Sample(120).c_str()); }},
    {"JoinOwnPiece",
     [](String& text, const String&) { text.IsEmpty() ? text.JoinPath("x") : text.JoinPath(text.Text()); }},
    {"TrimLeft", [](String& text, const String&) { text.IsEmpty() ? text.Append("x") : text.TrimLeft(); }},
    {"TrimRight", [](String& text, const String&) { text.IsEmpty() ? text.Append("x") : text.TrimRight(); }},
    {"Trim", [](String& text, const String&) { text.IsEmpty() ? text.Append("x") : text.Trim(); }},
    {"ToUpper", [](String& text, const String&) { text.IsEmpty() ? text.Append("x") : text.ToUpper(); }},
    {"AppendUnsigned", [](String& text, const String&) { text.AppendUnsigned(1, 120); }},
    {"AppendSigned", [](String& text, const String&) { text.AppendSigned(-1, 120); }},
    {"AppendHex", [](String& text, const String&) { text.AppendHex(1, 120); }},
    {"Format", [](String& text, const String&) { text.Format("%s-%f", text.Text(), 1e300); }},
    {"Reserve", [](String& text, const String&) { text.Reserve(500); }},
    {"TakeBuffer", [](String& text, const String&) { text.TakeBuffer(500); }},
};

class StringOutOfMemory : public ::testing::TestWithParam<StringOperation> {
 protected:
  // What the test's text looks like before the operation.
  enum class State { null, sole, shared, exclusive };

  int StopsIn(State state) {
    int stopped = 0;
    for (const Failing how : everyWay) {
      stopped += Stopper().Run(how, [&](Stopper& stopper) { return Check(stopper, state); });
    }
    return stopped;
  }

 private:
  bool Check(Stopper& stopper, State state) {
    const std::string before = state == State::null ? std::string() : "  " + Sample(45) + "  ";
    String exclusive("def");
    exclusive.TakeBuffer(3);
    String text;
    if (state != State::null) text = before.c_str();
    const String sharer = state == State::shared ? text : String();
    if (state == State::exclusive) text.TakeBuffer(text.Length());
    const char* block = text.Characters();
    const std::uint32_t references = block != nullptr ? ReferencesOf(text) : 0;

    const bool stopped = stopper.Stops([&] { GetParam().run(text, exclusive); });
    if (stopped) {
      EXPECT_EQ(before, Content(text));
      EXPECT_EQ(block, text.Characters());
      if (block != nullptr) {
        EXPECT_EQ(references, ReferencesOf(text));
        EXPECT_EQ('\0', block[text.Length()]);
      }
    }
    EXPECT_EQ(state == State::shared ? before : std::string(), Content(sharer));
    EXPECT_STREQ("def", exclusive.Characters());
    EXPECT_EQ(0u, ReferencesOf(exclusive));
    return stopped;
  }
};

TEST_P(StringOutOfMemory, LeavesTheTextAsItWas) {
  const int whenNull = StopsIn(State::null);
  const int whenSole = StopsIn(State::sole);
  const int whenShared = StopsIn(State::shared);
  const int whenExclusive = StopsIn(State::exclusive);
  // A shared text is never changed without a block of its own, so each operation was really stopped, both ways.
  EXPECT_GE(whenShared, 2);
  RecordProperty("stopped", whenNull + whenSole + whenShared + whenExclusive);
}

INSTANTIATE_TEST_SUITE_P(Operations, StringOutOfMemory, ::testing::ValuesIn(stringOperations),
                         [](const auto& test) { return std::string(test.param.name); });

// Making a String, of nothing but its arguments.

struct StringMaking {
  const char* name;
  void (*run)(const String& exclusive);
};

const StringMaking stringMakings[] = {
    {"FromText", [](const String&) { String("abc"); }},
    {"FromEmptyText", [](const String&) { String(""); }},
    {"FromBytes", [](const String&) { String("abc", 2); }},
    {"FromExclusive", [](const String& exclusive) { String copy(exclusive); }},
    {"Middle", [](const String& exclusive) { exclusive.Middle(0, 2); }},
};

class StringMakingOutOfMemory : public ::testing::TestWithParam<StringMaking> {};

TEST_P(StringMakingOutOfMemory, LeavesNothingBehind) {
  for (const Failing how : everyWay) {
    const int stopped = Stopper().Run(how, [&](Stopper& stopper) {
      String exclusive("abc");
      exclusive.TakeBuffer(3);
      return stopper.Stops([&] { GetParam().run(exclusive); });
    });
    EXPECT_EQ(1, stopped);
  }
}

INSTANTIATE_TEST_SUITE_P(Makings, StringMakingOutOfMemory, ::testing::ValuesIn(stringMakings),
                         [](const auto& test) { return std::string(test.param.name); });

// Operations on a ByteBuffer of 49 bytes.

struct BufferOperation {
  const char* name;
  void (*run)(ByteBuffer& buffer, const ByteBuffer& exclusive);
};

const BufferOperation bufferOperations[] = {
    {"Assign", [](ByteBuffer& buffer, const ByteBuffer& exclusive) { buffer = exclusive; }},
    {"AssignLent",
     [](ByteBuffer& buffer, const ByteBuffer&) {
       char lent[60];
       ByteBuffer other = ByteBuffer::External(lent, sizeof lent);
       other.AppendCopies('x', sizeof lent);
       buffer = other;
     }},
    {"SetAt", [](ByteBuffer& buffer, const ByteBuffer&) { buffer.SetAt(0, 'x'); }},
    {"SetLength", [](ByteBuffer& buffer, const ByteBuffer&) { buffer.SetLength(60); }},
    {"Reserve", [](ByteBuffer& buffer, const ByteBuffer&) { buffer.Reserve(60); }},
    {"AppendByte", [](ByteBuffer& buffer, const ByteBuffer&) { buffer.Append('x'); }},
    {"AppendBytes", [](ByteBuffer& buffer, const ByteBuffer& other) { buffer.Append(other.Bytes(), other.Length()); }},
    {"AppendItself", [](ByteBuffer& buffer, const ByteBuffer&) { buffer.Append(buffer.Bytes(), buffer.Length()); }},
    {"AppendCopies", [](ByteBuffer& buffer, const ByteBuffer&) { buffer.AppendCopies('x', 60); }},
    {"TakeBuffer", [](ByteBuffer& buffer, const ByteBuffer&) { buffer.TakeBuffer(60); }},
};

class ByteBufferOutOfMemory : public ::testing::TestWithParam<BufferOperation> {};

TEST_P(ByteBufferOutOfMemory, LeavesTheBytesAsTheyWere) {
  for (const bool isShared : {false, true}) {
    for (const Failing how : everyWay) {
      const int stopped = Stopper().Run(how, [&](Stopper& stopper) {
        ByteBuffer exclusive("def", 3);
        exclusive.TakeBuffer(3);
        ByteBuffer buffer(Sample(49).data(), 49);
        const ByteBuffer sharer = isShared ? buffer : ByteBuffer();
        const std::uint8_t* block = buffer.Bytes();
        const bool wasStopped = stopper.Stops([&] { GetParam().run(buffer, exclusive); });
        if (wasStopped) {
          EXPECT_EQ(block, buffer.Bytes());
          EXPECT_TRUE(buffer == ByteBuffer(Sample(49).data(), 49));
        }
        EXPECT_TRUE(sharer == ByteBuffer(Sample(49).data(), isShared ? 49 : 0));
        return wasStopped;
      });
      EXPECT_GE(stopped, isShared ? 1 : 0);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, ByteBufferOutOfMemory, ::testing::ValuesIn(bufferOperations),
                         [](const auto& test) { return std::string(test.param.name); });

// Operations on a record of 32 fields (a full array) and error code 7.

struct RecordOperation {
  const char* name;
  void (*run)(ProductRecord& record, const ProductRecord& other);
};

const RecordOperation recordOperations[] = {
    {"Copy", [](ProductRecord& record, const ProductRecord&) { ProductRecord copy(record); }},
    {"Assign", [](ProductRecord& record, const ProductRecord& other) { record = other; }},
    {"Clear",
     [](ProductRecord& record, const ProductRecord&) {
       const ProductRecord copy(record);  // so that the version is shared
       record.Clear();
     }},
    {"SetNew", [](ProductRecord& record, const ProductRecord&) { record.Set("new", "1"); }},
    {"SetOld", [](ProductRecord& record, const ProductRecord&) { record.Set("name0", "1"); }},
    {"Add", [](ProductRecord& record, const ProductRecord&) { record.Add("name0", "1"); }},
    {"AddItsOwn",
     [](ProductRecord& record, const ProductRecord&) {
       record.Add(record.Fields().At(0).Name(), record.Fields().At(0).Value());
     }},
    {"Reserve", [](ProductRecord& record, const ProductRecord&) { record.Fields().Reserve(100); }},
    {"Parse", [](ProductRecord& record, const ProductRecord&) { record.Parse("a:1^b:2^c:3"); }},
    {"ParseItsOwn", [](ProductRecord& record, const ProductRecord&) { record.Parse(record.Fields().At(0).Value()); }},
    {"Format", [](ProductRecord& record, const ProductRecord&) { record.Format(); }},
    {"FormatAsFields", [](ProductRecord& record, const ProductRecord&) { record.FieldSet::Format(); }},
};

class RecordOutOfMemory : public ::testing::TestWithParam<RecordOperation> {};

TEST_P(RecordOutOfMemory, LeavesTheRecordAsItWas) {
  for (const Failing how : everyWay) {
    const int stopped = Stopper().Run(how, [&](Stopper& stopper) {
      ProductRecord other;
      other.Add("other", "1");
      ProductRecord record;
      record.SetErrorCode(7);
      for (int i = 0; i < 32; ++i) record.Add(("name" + std::to_string(i)).c_str(), "value:1^more:2");
      const std::string before = Content(record.Format());
      const bool wasStopped = stopper.Stops([&] { GetParam().run(record, other); });
      if (wasStopped) {
        EXPECT_EQ(before, Content(record.Format()));
        EXPECT_EQ(7, record.ErrorCode());
        EXPECT_STREQ("1.0", record.Version().Text());
      }
      EXPECT_STREQ("KEST-Product: other:1\r\n", other.Format().Text());
      return wasStopped;
    });
    EXPECT_GE(stopped, 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, RecordOutOfMemory, ::testing::ValuesIn(recordOperations),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace kest
