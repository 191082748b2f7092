#include "zephyr/table/dbase.h"

#include <unistd.h>

#include <limits>

#include "record_text.h"
#include "shared_header.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/file_utils.h"

namespace zephyr {

namespace {

constexpr uint8_t kVersion = 0x03;
constexpr size_t kHeaderBlockSize = 32;
constexpr size_t kDescriptorSize = 32;
constexpr int16_t kMinHeaderLength = 33;
// At most 263 columns; longer headers are taken for damage.
constexpr int16_t kMaxHeaderLength = 8456;
constexpr unsigned char kLanguageDriver = 0x02;
constexpr unsigned char kDescriptorReserved = 0x02;
constexpr unsigned char kTerminator = 0x0D;
constexpr unsigned char kEndOfFile = 0x1A;
constexpr char kDeletedMark = '*';
constexpr char kLiveMark = ' ';

[[noreturn]] void RaiseInvalidFileType() {
  throw AutomationError(kDBaseInvalidFileType, kDBaseErrorSource, "Invalid dBase File Type");
}

std::string TrimAtNull(std::string_view text) {
  return std::string(text.substr(0, text.find('\0')));
}

void PutInt32(unsigned char* out, int32_t value) {
  auto bits = static_cast<uint32_t>(value);
  for (int i = 0; i < 4; ++i) out[i] = static_cast<unsigned char>(bits >> (8 * i));
}

// The 32-byte descriptor of a column as creation writes it.
void AppendDescriptor(const Field& field, std::string* out) {
  unsigned char descriptor[kDescriptorSize] = {};
  std::string name = ToCodePage(field.Name());
  name.resize(std::min<size_t>(name.size(), 11));
  name.copy(reinterpret_cast<char*>(descriptor), name.size());
  descriptor[11] = TypeNameToCode(field.FieldType());
  PutInt32(descriptor + 12, field.Position());
  descriptor[16] = static_cast<unsigned char>(field.Length());
  descriptor[17] = static_cast<unsigned char>(field.Decimals());
  descriptor[18] = kDescriptorReserved;
  out->append(reinterpret_cast<const char*>(descriptor), sizeof descriptor);
}

void RemoveIfPresent(const std::string& path) {
  if (PathExists(path)) ::unlink(path.c_str());
}

}  // namespace

dBase::dBase() : fields_(std::make_shared<zephyr::Fields>()), shared_header_(new SharedHeader) {}

dBase::~dBase() {
  try {
    CloseFile();
  } catch (...) {
    // A destructor has nobody to report to; the file is closed regardless.
  }
}

std::shared_ptr<zephyr::Fields> dBase::Fields() {
  Columns();
  return fields_;
}

zephyr::Fields& dBase::Columns() {
  if (!fields_) fields_ = std::make_shared<zephyr::Fields>();
  return *fields_;
}

const Field& dBase::Column(int32_t index) const {
  if (!fields_ || index < 1 || index > fields_->Count()) {
    throw RuntimeError(RuntimeErrorCode::kObjectRequired, "no column " + std::to_string(index));
  }
  return *fields_->begin()[index - 1];
}

Variant dBase::RecordCount() const {
  if (!FileExists()) return Variant(int16_t{0});
  return Variant(static_cast<int32_t>(header_.record_count));
}

bool dBase::Deleted() const {
  return !buffer_.empty() && buffer_[0] == kDeletedMark;
}

void dBase::Deleted(bool deleted) {
  if (buffer_.empty() || !FileExists()) return;
  buffer_[0] = deleted ? kDeletedMark : kLiveMark;
}

Variant dBase::Value(int32_t index) const {
  if (buffer_.empty() || !FileExists()) return Variant(std::string());
  const Field& field = Column(index);
  if (field.FieldType() != "C") return Variant();
  return Variant(FromCodePage(RecordSlice(buffer_, field.Position(), field.Length())));
}

void dBase::Value(int32_t index, const Variant& value) {
  const Field& field = Column(index);
  if (field.FieldType() != "C") return;
  if (value.IsText()) {
    WriteText(field, value.Text());
  } else {
    WriteText(field, value.ToText());
  }
}

void dBase::PutText(int32_t index, std::string_view text) {
  const Field& field = Column(index);
  if (field.FieldType() == "C") WriteText(field, text);
}

void dBase::WriteText(const Field& field, std::string_view text) {
  std::string scratch;
  WriteColumn(&buffer_, field.Position(), field.Length(),
              ToRecordBytes(ActiveCodePage(), text, &scratch));
}

void dBase::OpenFile(const std::string& file_name) {
  if (FileExists()) CloseFile();
  if (open_mode_ == kCreate) {
    CreateTable(file_name);
    return;
  }
  if (!PathExists(file_name)) {
    throw AutomationError(kDBaseFileNotFound, kDBaseErrorSource,
                          "dBase File Not Found '" + file_name + "'");
  }
  if (open_mode_ != kReadOnly && open_mode_ != kReadWrite) {
    throw RuntimeError(
        RuntimeErrorCode::kBadFileNameOrNumber,
        "open mode " + std::to_string(open_mode_) + " opens nothing ('" + file_name + "')");
  }
  bool writable = open_mode_ == kReadWrite;
  file_ = File::Open(file_name, writable ? File::Mode::kReadWrite : File::Mode::kRead);
  try {
    ReadStructure(file_name);
  } catch (...) {
    file_.Close();
    throw;
  }
  shared_header_->Attach(&file_, writable);
}

void dBase::ReadStructure(const std::string& file_name) {
  unsigned char block[kHeaderBlockSize];
  size_t got = file_.ReadAt(0, block, sizeof block);
  if (got < 1 || block[0] != kVersion) RaiseInvalidFileType();
  if (got < sizeof block) {
    throw RuntimeError(
        RuntimeErrorCode::kInputPastEndOfFile,
        "the header of '" + file_name + "' is cut short at byte " + std::to_string(got));
  }
  TableHeader header = TableHeader::Decode(block);
  if (header.month < 1 || header.month > 12) RaiseInvalidFileType();
  if (header.header_length < kMinHeaderLength || header.header_length > kMaxHeaderLength) {
    RaiseInvalidFileType();
  }
  size_t field_count = static_cast<size_t>(header.header_length - kMinHeaderLength) / 32;
  if (field_count < 1) RaiseInvalidFileType();

  std::string descriptors(field_count * kDescriptorSize, '\0');
  got = file_.ReadAt(kHeaderBlockSize, descriptors.data(), descriptors.size());
  if (got < descriptors.size()) {
    throw RuntimeError(RuntimeErrorCode::kInputPastEndOfFile,
                       "field descriptor " + std::to_string(got / kDescriptorSize + 1) + " of '" +
                           file_name + "' is cut short by the end of the file");
  }
  header_ = header;
  std::copy(block + TableHeader::kSize, block + kHeaderBlockSize, reserved_.begin());

  zephyr::Fields& columns = Columns();
  int32_t position = 1;
  for (size_t i = 0; i < field_count; ++i) {
    const char* descriptor = descriptors.data() + i * kDescriptorSize;
    auto length = static_cast<unsigned char>(descriptor[16]);
    auto decimals = static_cast<unsigned char>(descriptor[17]);
    columns.Add(FromCodePage(TrimAtNull(std::string_view(descriptor, 11))),
                TypeCodeToName(static_cast<unsigned char>(descriptor[11])), length, decimals,
                position + 1);
    position += length;
  }
  record_length_ = position;
  buffer_.assign(static_cast<size_t>(position), ' ');
  filename_ = file_name;
}

void dBase::CreateTable(const std::string& file_name) {
  zephyr::Fields& columns = Columns();
  int32_t position = 1;
  for (const auto& field : columns) {
    field->Position(position + 1);
    position += field->Length();
  }

  RemoveIfPresent(file_name);
  if (file_name.size() >= 4) {
    std::string base = file_name.substr(0, file_name.size() - 4);
    RemoveIfPresent(base + ".zpi");
    RemoveIfPresent(base + ".inf");
  }
  int error_number = 0;
  file_ = File::TryOpen(file_name, File::Mode::kOpenOrCreate, &error_number);
  if (!file_.IsOpen()) {
    dirty_ = true;
    return;
  }

  TableHeader header;
  header.version = kVersion;
  header.StampToday();
  header.record_length = static_cast<uint16_t>(position);
  header.header_length = static_cast<int16_t>(32 * columns.Count() + kMinHeaderLength);
  TableHeader::Bytes block = header.Encode();
  std::string bytes(block.begin(), block.end());
  bytes.append(17, '\0');
  bytes.push_back(static_cast<char>(kLanguageDriver));
  bytes.append(2, '\0');
  for (const auto& field : columns) AppendDescriptor(*field, &bytes);
  bytes.push_back(static_cast<char>(kTerminator));
  try {
    file_.WriteAt(0, bytes.data(), bytes.size());
  } catch (const Error&) {
    // Creation reports nothing; a table that could not be written shows up
    // when it is read.
  }

  header_ = header;
  reserved_ = {};
  reserved_[29 - TableHeader::kSize] = kLanguageDriver;
  filename_ = file_name;
  record_length_ = header.record_length;
  buffer_.assign(static_cast<size_t>(record_length_), ' ');
  record_no_ = 0;
  dirty_ = true;
  open_mode_ = kReadWrite;
  shared_header_->Attach(&file_, true);
}

void dBase::InitRecord() {
  buffer_.assign(static_cast<size_t>(record_length_), ' ');
  OverwriteRecord(&buffer_, 1, std::string_view(&kLiveMark, 1));
  for (const auto& field : Columns()) {
    if (field->FieldType() == "C") WriteColumn(&buffer_, field->Position(), field->Length(), {});
  }
}

void dBase::GetRecord(int32_t rec_no) {
  WriteHeldRecords();
  if (!FileExists() || rec_no < 1 || rec_no > static_cast<int64_t>(header_.record_count)) {
    record_no_ = 0;
    buffer_.assign(static_cast<size_t>(record_length_), ' ');
    return;
  }
  buffer_.resize(static_cast<size_t>(record_length_));
  if (file_.ReadAt(RecordOffset(rec_no), buffer_.data(), buffer_.size()) < buffer_.size()) {
    buffer_.assign(static_cast<size_t>(record_length_), ' ');
    record_no_ = 0;
    throw RuntimeError(RuntimeErrorCode::kInputPastEndOfFile,
                       "record " + std::to_string(rec_no) + " of '" + filename_ +
                           "' lies beyond the end of the file");
  }
  record_no_ = rec_no;
}

void dBase::PutRecord(int32_t rec_no) {
  if (!FileExists()) {
    record_no_ = 0;
    return;
  }
  if (open_mode_ != kReadWrite) {
    record_no_ = 0;
    throw AutomationError(kDBaseReadOnly, kDBaseErrorSource, "Database is ReadOnly");
  }
  bool append = rec_no < 1 || rec_no > static_cast<int64_t>(header_.record_count);
  if (hold_appends_ && append && buffer_.size() == static_cast<size_t>(record_length_)) {
    HoldAppend();
    return;
  }
  WriteHeldRecords();
  ReadHeader();
  int64_t count = header_.record_count;
  if (rec_no < 1 || rec_no > count) rec_no = 0;
  if (rec_no > 0) {
    file_.WriteAt(RecordOffset(rec_no), buffer_.data(), buffer_.size());
  } else {
    rec_no = NextRecordNumber();
    file_.WriteAt(RecordOffset(rec_no), buffer_.data(), buffer_.size());
    header_.record_count = static_cast<uint32_t>(rec_no);
    if (!batch_) WriteHeader(header_.record_count);
  }
  dirty_ = true;
  record_no_ = rec_no;
}

void dBase::HoldAppends() {
  hold_appends_ = FileExists();
}

int32_t dBase::NextRecordNumber() const {
  if (header_.record_count >= static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
    throw RuntimeError(RuntimeErrorCode::kOverflow,
                       "'" + filename_ + "' cannot hold another record");
  }
  return static_cast<int32_t>(header_.record_count + 1);
}

void dBase::HoldAppend() {
  int32_t rec_no = NextRecordNumber();
  // Records are written in blocks of about this many bytes.
  constexpr size_t kHeldBytes = size_t{4} << 20;
  if (held_.empty()) {
    held_from_ = rec_no;
    held_.reserve(kHeldBytes + buffer_.size());
  }
  held_ += buffer_;
  header_.record_count = static_cast<uint32_t>(rec_no);
  dirty_ = true;
  record_no_ = rec_no;
  if (held_.size() >= kHeldBytes) WriteHeldRecords();
}

void dBase::WriteHeldRecords() {
  if (held_.empty()) return;
  file_.WriteAt(RecordOffset(held_from_), held_.data(), held_.size());
  held_.clear();
  if (!batch_) WriteHeader(header_.record_count);
}

void dBase::CloseFile() {
  if (FileExists()) {
    try {
      WriteHeldRecords();
      if (dirty_) {
        ReadHeader();
        file_.WriteAt(RecordOffset(int64_t{header_.record_count} + 1), &kEndOfFile, 1);
      }
    } catch (...) {
      shared_header_->Detach();
      file_.Close();
      Reset();
      throw;
    }
    shared_header_->Detach();
    file_.Close();
  }
  Reset();
}

void dBase::Reset() {
  Columns().Clear();
  filename_.clear();
  record_no_ = 0;
  buffer_.clear();
  dirty_ = false;
  batch_ = false;
  hold_appends_ = false;
  held_.clear();
  open_mode_ = kReadOnly;
}

void dBase::ReadHeader() {
  if (!FileExists()) return;
  header_ = shared_header_->Read();
  record_length_ = header_.record_length;
}

void dBase::WriteHeader(uint32_t count) {
  ReadHeader();
  header_.StampToday();
  if (count > 0) header_.record_count = count;
  shared_header_->Write(header_);
}

int64_t dBase::RecordOffset(int64_t rec_no) const {
  if (header_.header_length < 0) {
    throw RuntimeError(RuntimeErrorCode::kPathFileAccessError,
                       "the header of '" + filename_ + "' gives a negative header length");
  }
  return header_.header_length + (rec_no - 1) * record_length_;
}

}  // namespace zephyr
