#import "PropertyListReader.h"
#import "LVXMLPropertyList.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// A full recent-items list, bookmarks and all, is at most a hundred kilobytes or so; anything
// admitted must also parse in a few megabytes of Mail's memory.
const NSUInteger LVMaximumLength = 1 << 20;
// Both files are four or five levels deep. Deeper nesting is what overflows the parser's
// stack, and in a binary list a reference cycle is nesting without end.
const unsigned LVMaximumDepth = 32;
// Keys and values together, ten times what a full recent-items list holds. A binary list
// may refer to one object from many places, and the parser builds a copy for every
// reference: each reference counts, so a small file cannot unfold into millions of objects.
const uint64_t LVMaximumObjects = 10000;

const char LVBinaryMagic[] = "bplist00";
const char LVXMLMagic[] = "<?xml";

bool startsWith(const char *from, const char *end, const char *text)
{
    size_t length = strlen(text);
    return (size_t)(end - from) >= length && memcmp(from, text, length) == 0;
}

#pragma mark Binary lists

// A binary list as its 32-byte trailer describes it. Objects lie between the 8-byte
// header and the offset table; each object's offset is one entry of that table.
struct BinaryList {
    const uint8_t *bytes;
    uint64_t offsetTableStart; // also where the objects end
    unsigned offsetSize;
    unsigned referenceSize;
    uint64_t objectCount;
    uint64_t rootObject;
};

// What unfolding the list has cost so far, every reference counted.
struct Unfolded {
    uint64_t objects;
    uint64_t bytes;
};

const uint64_t LVBinaryHeaderLength = 8;
const uint64_t LVBinaryTrailerLength = 32;

uint64_t bigEndian(const uint8_t *bytes, unsigned size)
{
    uint64_t value = 0;
    for (unsigned i = 0; i < size; i++)
        value = (value << 8) | bytes[i];
    return value;
}

// GNUstep's binary reader takes offsets and references of one to four bytes; a Mac writes
// eight-byte ones only for lists far larger than these files.
bool isReadableSize(unsigned size)
{
    return size == 1 || size == 2 || size == 4;
}

bool readTrailer(const uint8_t *bytes, size_t length, BinaryList &list)
{
    if (length < LVBinaryHeaderLength + LVBinaryTrailerLength)
        return false;
    const uint8_t *trailer = bytes + length - LVBinaryTrailerLength;
    list.bytes = bytes;
    list.offsetSize = trailer[6];
    list.referenceSize = trailer[7];
    list.objectCount = bigEndian(trailer + 8, 8);
    list.rootObject = bigEndian(trailer + 16, 8);
    list.offsetTableStart = bigEndian(trailer + 24, 8);
    uint64_t tableEnd = length - LVBinaryTrailerLength;
    if (!isReadableSize(list.offsetSize) || !isReadableSize(list.referenceSize))
        return false;
    if (list.objectCount == 0 || list.objectCount > LVMaximumObjects || list.rootObject >= list.objectCount)
        return false;
    if (list.offsetTableStart < LVBinaryHeaderLength || list.offsetTableStart > tableEnd)
        return false;
    return list.objectCount * list.offsetSize <= tableEnd - list.offsetTableStart;
}

bool fits(const BinaryList &list, uint64_t position, uint64_t length)
{
    return position <= list.offsetTableStart && length <= list.offsetTableStart - position;
}

// The count that follows a marker: in its low four bits, or, when those are all set, in
// an integer object of 1, 2, 4 or 8 bytes right after it.
bool readCount(const BinaryList &list, uint8_t marker, uint64_t &position, uint64_t &count)
{
    count = marker & 0x0F;
    if (count != 0x0F)
        return true;
    if (!fits(list, position, 1))
        return false;
    uint8_t countMarker = list.bytes[position++];
    if ((countMarker & 0xF0) != 0x10 || (countMarker & 0x0F) > 3)
        return false;
    unsigned size = 1u << (countMarker & 0x0F);
    if (!fits(list, position, size))
        return false;
    count = bigEndian(list.bytes + position, size);
    position += size;
    return true;
}

// The parser makes nothing of a string it cannot decode, and a dictionary or array holding that
// nothing raises: one-byte strings are admitted as ASCII, two-byte ones with every surrogate paired.
bool isASCII(const uint8_t *bytes, uint64_t length)
{
    return std::all_of(bytes, bytes + length, [](uint8_t byte) { return byte < 0x80; });
}

bool isUTF16(const uint8_t *bytes, uint64_t count)
{
    for (uint64_t i = 0; i < count; i++) {
        unsigned unit = (unsigned)bigEndian(bytes + 2 * i, 2);
        if (unit >= 0xDC00 && unit <= 0xDFFF)
            return false;
        if (unit < 0xD800 || unit > 0xDBFF)
            continue;
        if (++i == count)
            return false;
        unsigned low = (unsigned)bigEndian(bytes + 2 * i, 2);
        if (low < 0xDC00 || low > 0xDFFF)
            return false;
    }
    return true;
}

// GNUstep's date raises for an interval that is not a number; a Mac writes none that is not
// finite.
bool isFiniteTime(const uint8_t *bytes)
{
    uint64_t bits = bigEndian(bytes, 8);
    double seconds;
    memcpy(&seconds, &bits, sizeof seconds);
    return std::isfinite(seconds);
}

bool admitsBinaryObject(const BinaryList &list, uint64_t index, unsigned depth, Unfolded &unfolded);

// References are checked one by one as they are followed: a container's count is taken
// at its word only after it is known to fit in the file.
bool admitsReferences(const BinaryList &list, uint64_t position, uint64_t count, unsigned depth, Unfolded &unfolded)
{
    if (count > LVMaximumObjects || !fits(list, position, count * list.referenceSize))
        return false;
    for (uint64_t i = 0; i < count; i++) {
        uint64_t child = bigEndian(list.bytes + position + i * list.referenceSize, list.referenceSize);
        if (!admitsBinaryObject(list, child, depth + 1, unfolded))
            return false;
    }
    return true;
}

bool admitsPayload(const BinaryList &list, uint64_t position, uint64_t length, Unfolded &unfolded)
{
    if (length > LVMaximumLength)
        return false;
    unfolded.bytes += length;
    return unfolded.bytes <= LVMaximumLength && fits(list, position, length);
}

// Only the kinds of object a Mac writes into a preferences file: no null, fill, UID or set
// markers, integers of at most 8 bytes, reals of 4 or 8.
bool admitsBinaryObject(const BinaryList &list, uint64_t index, unsigned depth, Unfolded &unfolded)
{
    if (index >= list.objectCount || depth > LVMaximumDepth || ++unfolded.objects > LVMaximumObjects)
        return false;
    uint64_t position = bigEndian(list.bytes + list.offsetTableStart + index * list.offsetSize, list.offsetSize);
    if (position < LVBinaryHeaderLength || !fits(list, position, 1))
        return false;
    uint8_t marker = list.bytes[position++];
    unsigned low = marker & 0x0F;
    uint64_t count = 0;
    switch (marker >> 4) {
    case 0x0:
        return marker == 0x08 || marker == 0x09;
    case 0x1:
        return low <= 3 && fits(list, position, 1u << low);
    case 0x2:
        return (low == 2 || low == 3) && fits(list, position, 1u << low);
    case 0x3:
        return marker == 0x33 && fits(list, position, 8) && isFiniteTime(list.bytes + position);
    case 0x4:
        return readCount(list, marker, position, count) && admitsPayload(list, position, count, unfolded);
    case 0x5:
        return readCount(list, marker, position, count) && admitsPayload(list, position, count, unfolded)
            && isASCII(list.bytes + position, count);
    case 0x6:
        return readCount(list, marker, position, count) && count <= LVMaximumLength && admitsPayload(list, position, count * 2, unfolded)
            && isUTF16(list.bytes + position, count);
    case 0xA:
        return readCount(list, marker, position, count) && admitsReferences(list, position, count, depth, unfolded);
    case 0xD:
        // The keys' references, then as many values' references.
        return readCount(list, marker, position, count) && count <= LVMaximumObjects
            && admitsReferences(list, position, count * 2, depth, unfolded);
    default:
        return false;
    }
}

bool admitsBinary(const uint8_t *bytes, size_t length)
{
    BinaryList list;
    if (!readTrailer(bytes, length, list))
        return false;
    Unfolded unfolded = { 0, 0 };
    return admitsBinaryObject(list, list.rootObject, 1, unfolded);
}

// Reads one byte past the limit, so that a longer file is refused without being read whole.
NSData *leadingBytesOfFile(NSString *path, NSUInteger limit)
{
    NSFileHandle *file = path != nil ? [NSFileHandle fileHandleForReadingAtPath:path] : nil;
    @try {
        return [file readDataOfLength:limit];
    } @catch (NSException *exception) {
        return nil; // a folder, or a read error: as unreadable as a missing file
    }
}

} // namespace

@implementation LVPropertyListReader

+ (id)propertyListWithContentsOfFile:(NSString *)path
{
    return [self propertyListWithData:leadingBytesOfFile(path, LVMaximumLength + 1)];
}

// The platform's other forms, OpenStep text and its own serialised form, are never read: a Mac
// writes neither into these files, and their parsers are the least robust of all.
+ (id)propertyListWithData:(NSData *)data
{
    NSUInteger length = [data length];
    if (length == 0 || length > LVMaximumLength)
        return nil;
    const uint8_t *bytes = (const uint8_t *)[data bytes];
    const char *text = (const char *)bytes;
    if (startsWith(text, text + length, LVXMLMagic))
        return [LVXMLPropertyList propertyListWithBytes:bytes length:length maximumDepth:LVMaximumDepth maximumObjects:LVMaximumObjects];
    if (!startsWith(text, text + length, LVBinaryMagic) || !admitsBinary(bytes, length))
        return nil;
    @try {
        return [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable format:NULL error:NULL];
    } @catch (NSException *exception) {
        return nil; // a failure the gate did not foresee still reads as no file
    }
}

+ (BOOL)admitsData:(NSData *)data
{
    return [self propertyListWithData:data] != nil;
}

+ (NSUInteger)maximumLength
{
    return LVMaximumLength;
}

@end
