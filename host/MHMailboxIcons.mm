#import "MHMailboxIcons.h"
#import "MailboxUid.h"

#include <initializer_list>

namespace {

NSColor *rgb(int hex)
{
    return [NSColor colorWithCalibratedRed:((hex >> 16) & 0xFF) / 255.0
                                     green:((hex >> 8) & 0xFF) / 255.0
                                      blue:(hex & 0xFF) / 255.0
                                     alpha:1.0];
}

void fillAndStroke(NSBezierPath *path, int fill, int stroke)
{
    [rgb(fill) set];
    [path fill];
    [rgb(stroke) set];
    [path setLineWidth:1.0];
    [path stroke];
}

NSBezierPath *polygon(std::initializer_list<NSPoint> points)
{
    NSBezierPath *path = [NSBezierPath bezierPath];
    for (const NSPoint &point : points) {
        if ([path isEmpty])
            [path moveToPoint:point];
        else
            [path lineToPoint:point];
    }
    [path closePath];
    return path;
}

void line(CGFloat x1, CGFloat y1, CGFloat x2, CGFloat y2, int colour, CGFloat width)
{
    NSBezierPath *path = [NSBezierPath bezierPath];
    [path moveToPoint:NSMakePoint(x1, y1)];
    [path lineToPoint:NSMakePoint(x2, y2)];
    [path setLineWidth:width];
    [rgb(colour) set];
    [path stroke];
}

// Every picture is drawn on a 16-unit grid, origin at the bottom left.
void drawFolder()
{
    fillAndStroke(polygon({ { 1.5, 11 }, { 1.5, 13.5 }, { 6.5, 13.5 }, { 7.5, 12 }, { 7.5, 11 } }), 0x8DBCEB, 0x3D6FA8);
    fillAndStroke([NSBezierPath bezierPathWithRect:NSMakeRect(1.5, 2.5, 13, 9)], 0xA9CFF5, 0x3D6FA8);
}

void drawInbox()
{
    fillAndStroke(polygon({ { 1.5, 2.5 }, { 1.5, 8.5 }, { 5, 8.5 }, { 6, 6.5 }, { 10, 6.5 }, { 11, 8.5 }, { 14.5, 8.5 }, { 14.5, 2.5 } }),
        0x5B9BE0, 0x23508A);
    line(8, 15, 8, 8.5, 0x23508A, 1.5);
    fillAndStroke(polygon({ { 5, 10.5 }, { 11, 10.5 }, { 8, 7 } }), 0x23508A, 0x23508A);
}

void drawSent()
{
    fillAndStroke(polygon({ { 1, 8 }, { 15, 14 }, { 10, 2 }, { 8, 6.5 } }), 0xFFFFFF, 0x2D7D46);
    line(8, 6.5, 15, 14, 0x2D7D46, 1.0);
}

void drawDrafts()
{
    fillAndStroke([NSBezierPath bezierPathWithRect:NSMakeRect(2.5, 1.5, 10, 13)], 0xFFFFFF, 0x707070);
    for (CGFloat y = 11.5; y > 3; y -= 2.5)
        line(4.5, y, 10.5, y, 0xA0A0A0, 1.0);
    line(7, 3, 14.5, 10.5, 0xD9A400, 2.5);
}

void drawTrash()
{
    fillAndStroke(polygon({ { 3.5, 1.5 }, { 2.5, 11.5 }, { 13.5, 11.5 }, { 12.5, 1.5 } }), 0xC8CCD2, 0x5A6068);
    fillAndStroke([NSBezierPath bezierPathWithRect:NSMakeRect(1.5, 11.5, 13, 2)], 0xA8ADB5, 0x5A6068);
    for (CGFloat x = 5.5; x < 11; x += 2.5)
        line(x, 3, x, 10, 0x5A6068, 1.0);
}

void drawJunk()
{
    fillAndStroke([NSBezierPath bezierPathWithOvalInRect:NSMakeRect(1.5, 1.5, 13, 13)], 0xD8B35A, 0x7A5A14);
    line(5, 5, 11, 11, 0x7A5A14, 2.0);
    line(5, 11, 11, 5, 0x7A5A14, 2.0);
}

} // namespace

@implementation MHMailboxIcons

+ (int)iconKindForMailboxType:(int)type
{
    switch (type) {
    case MHMailboxTypeInbox:
    case MHMailboxTypeSent:
    case MHMailboxTypeDrafts:
    case MHMailboxTypeTrash:
    case MHMailboxTypeJunk:
        return type;
    default:
        return MHMailboxTypeGeneric;
    }
}

+ (void)drawKind:(int)kind
{
    switch (kind) {
    case MHMailboxTypeInbox: drawInbox(); break;
    case MHMailboxTypeSent: drawSent(); break;
    case MHMailboxTypeDrafts: drawDrafts(); break;
    case MHMailboxTypeTrash: drawTrash(); break;
    case MHMailboxTypeJunk: drawJunk(); break;
    default: drawFolder(); break;
    }
}

+ (NSImage *)newIconForKind:(int)kind size:(CGFloat)size
{
    NSImage *icon = [[NSImage alloc] initWithSize:NSMakeSize(size, size)];
    [icon lockFocus];
    NSAffineTransform *scale = [NSAffineTransform transform];
    [scale scaleBy:size / 16.0];
    [scale concat];
    [self drawKind:kind];
    [icon unlockFocus];
    return icon;
}

@end
