// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// A second opinion on keyed archives: reads and writes them with GNUstep's classes.
//
//   quenby-archive-tool read ARCHIVE
//       prints the content as JSON with tags (Tests/Platform/data/archives/README.md).
//   quenby-archive-tool write binary|xml plain|mutable PLIST ARCHIVE
//       archives the property list, in containers and leaves of that kind.

#import <Foundation/Foundation.h>
#include <stdio.h>

static NSString *tagged(NSString *tag, NSString *content)
{
    return [NSString stringWithFormat:@"{\"%@\":\"%@\"}", tag, content];
}

static NSString *quoted(NSString *text)
{
    NSMutableString *result = [NSMutableString stringWithString:@"\""];
    for (NSUInteger i = 0; i < [text length]; i++)
        [result appendFormat:@"\\u%04x", (unsigned)[text characterAtIndex:i]];
    [result appendString:@"\""];
    return result;
}

static NSString *json(id value);

static NSString *jsonList(NSArray *list)
{
    NSMutableArray *parts = [NSMutableArray array];
    for (NSUInteger i = 0; i < [list count]; i++)
        [parts addObject:json([list objectAtIndex:i])];
    return [NSString stringWithFormat:@"[%@]", [parts componentsJoinedByString:@",\n"]];
}

static NSString *jsonObject(NSDictionary *dictionary)
{
    NSMutableArray *parts = [NSMutableArray array];
    NSEnumerator *keys = [dictionary keyEnumerator];
    for (id key = [keys nextObject]; key; key = [keys nextObject])
        [parts addObject:[NSString stringWithFormat:@"%@:%@", quoted(key), json([dictionary objectForKey:key])]];
    return [NSString stringWithFormat:@"{%@}", [parts componentsJoinedByString:@",\n"]];
}

static NSString *jsonNumber(NSNumber *number)
{
    if ([number isKindOfClass:[[NSNumber numberWithBool:YES] class]])
        return [number boolValue] ? @"true" : @"false";
    switch ([number objCType][0]) {
    case 'd':
    case 'f':
        return tagged(@"$real", [NSString stringWithFormat:@"%.17g", [number doubleValue]]);
    case 'Q':
    case 'L':
        return tagged(@"$int", [NSString stringWithFormat:@"%llu", [number unsignedLongLongValue]]);
    default:
        return tagged(@"$int", [NSString stringWithFormat:@"%lld", [number longLongValue]]);
    }
}

static NSString *json(id value)
{
    if ([value isKindOfClass:[NSString class]])
        return quoted(value);
    if ([value isKindOfClass:[NSNumber class]])
        return jsonNumber(value);
    if ([value isKindOfClass:[NSArray class]])
        return jsonList(value);
    if ([value isKindOfClass:[NSDictionary class]])
        return jsonObject(value);
    if ([value isKindOfClass:[NSData class]])
        return tagged(@"$data", [value base64EncodedStringWithOptions:0]);
    if ([value isKindOfClass:[NSDate class]])
        return tagged(@"$date", [NSString stringWithFormat:@"%.17g", [value timeIntervalSinceReferenceDate]]);
    if (value == [NSNull null])
        return @"{\"$null\":true}";
    [NSException raise:NSInvalidArgumentException format:@"an object of class %@", [value class]];
    return nil;
}

static BOOL readArchive(NSString *path)
{
    id content = [NSKeyedUnarchiver unarchiveObjectWithFile:path];
    if (content == nil)
        return NO;
    return puts([json(content) UTF8String]) >= 0;
}

static BOOL writeArchive(BOOL asXML, BOOL asMutable, NSString *from, NSString *to)
{
    NSString *error = nil;
    id content = [NSPropertyListSerialization propertyListFromData:[NSData dataWithContentsOfFile:from]
                                                  mutabilityOption:asMutable ? NSPropertyListMutableContainersAndLeaves
                                                                             : NSPropertyListImmutable
                                                            format:NULL
                                                  errorDescription:&error];
    if (content == nil)
        return NO;
    NSMutableData *data = [NSMutableData data];
    NSKeyedArchiver *archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
    [archiver setOutputFormat:asXML ? NSPropertyListXMLFormat_v1_0 : NSPropertyListBinaryFormat_v1_0];
    [archiver encodeObject:content forKey:@"root"];
    [archiver finishEncoding];
    return [data writeToFile:to atomically:NO];
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NSMutableArray *arguments = [NSMutableArray array];
    for (int i = 1; i < argc; i++)
        [arguments addObject:[NSString stringWithUTF8String:argv[i]]];
    BOOL done = NO;
    @try {
        if (argc == 3 && [[arguments objectAtIndex:0] isEqual:@"read"])
            done = readArchive([arguments objectAtIndex:1]);
        else if (argc == 6 && [[arguments objectAtIndex:0] isEqual:@"write"])
            done = writeArchive([[arguments objectAtIndex:1] isEqual:@"xml"],
                                [[arguments objectAtIndex:2] isEqual:@"mutable"], [arguments objectAtIndex:3],
                                [arguments objectAtIndex:4]);
    }
    @catch (NSException *exception) {
        fprintf(stderr, "%s\n", [[exception reason] UTF8String]);
    }
    [pool release];
    return done ? 0 : 1;
}
