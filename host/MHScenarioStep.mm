#import "MHScenarioStep.h"
#import "MHUserActions.h"

namespace {

// What each command takes and which of the user's actions carries it out. contextualAt is
// where the word "contextual" may stand among the arguments, or -1 when the command has no
// contextual form.
struct CommandRule {
    const char *name;
    SEL action;
    NSUInteger minArguments;
    NSUInteger maxArguments;
    int contextualAt;
    const char *usage;
};

const CommandRule commandRules[] = {
    { "select-mailbox", @selector(selectMailbox:), 1, 1, -1, "select-mailbox ACCOUNT/MAILBOX" },
    { "select-messages", @selector(selectMessages:), 1, NSUIntegerMax, -1, "select-messages all|none|INDEX..." },
    { "move-to", @selector(moveTo:), 1, 1, 0, "move-to [contextual] ACCOUNT/MAILBOX" },
    { "copy-to", @selector(copyTo:), 1, 1, 0, "copy-to [contextual] ACCOUNT/MAILBOX" },
    { "show-menu", @selector(showMenu:), 1, 1, 0, "show-menu [contextual] MENU-TITLE" },
    { "choose", @selector(choose:), 2, 2, 0, "choose [contextual] MENU-TITLE INDEX|ITEM-TITLE" },
    { "rename-mailbox", @selector(renameMailbox:), 2, 2, -1, "rename-mailbox ACCOUNT/MAILBOX NEW-NAME" },
    { "delete-mailbox", @selector(deleteMailbox:), 1, 1, -1, "delete-mailbox ACCOUNT/MAILBOX" },
    { "remove-account", @selector(removeAccount:), 1, 1, -1, "remove-account ACCOUNT" },
    { "add-account", @selector(addAccount:), 1, 2, -1, "add-account ACCOUNT [POP|IMAP]" },
    { "list-messages", @selector(listMessages:), 1, 1, -1, "list-messages ACCOUNT/MAILBOX" },
    { "list-alerts", @selector(listAlerts:), 0, 0, -1, "list-alerts" },
    { "new-viewer", @selector(newViewer:), 0, 0, -1, "new-viewer" },
    { "screenshot", @selector(screenshot:), 1, 2, 1, "screenshot NAME [contextual] [MENU-TITLE]" },
    { "quit", @selector(quit:), 0, 0, -1, "quit" },
};

const CommandRule *ruleForCommand(NSString *command)
{
    for (const CommandRule &rule : commandRules) {
        if ([command isEqualToString:[NSString stringWithUTF8String:rule.name]])
            return &rule;
    }
    return nullptr;
}

NSString *usageOf(const CommandRule *rule)
{
    return [NSString stringWithFormat:@"usage: %s", rule->usage];
}

BOOL isIndex(NSString *word)
{
    NSCharacterSet *nonDigits = [[NSCharacterSet decimalDigitCharacterSet] invertedSet];
    return [word length] > 0 && [word rangeOfCharacterFromSet:nonDigits].location == NSNotFound;
}

} // namespace

@implementation MHScenarioStep

// Words split at spaces; double quotes group words and are removed. nil when a quote is left open.
+ (NSArray *)wordsOfLine:(NSString *)line
{
    NSMutableArray *words = [NSMutableArray array];
    NSMutableString *word = nil;
    BOOL quoted = NO;
    for (NSUInteger i = 0; i < [line length]; i++) {
        unichar c = [line characterAtIndex:i];
        if (c == '"') {
            quoted = !quoted;
            if (word == nil)
                word = [NSMutableString string];
        } else if (!quoted && (c == ' ' || c == '\t')) {
            if (word != nil)
                [words addObject:word];
            word = nil;
        } else {
            if (word == nil)
                word = [NSMutableString string];
            [word appendFormat:@"%C", c];
        }
    }
    if (quoted)
        return nil;
    if (word != nil)
        [words addObject:word];
    return words;
}

+ (NSString *)problemWithSelection:(NSArray *)arguments
{
    BOOL single = [arguments count] == 1;
    for (NSString *argument in arguments) {
        BOOL word = [argument isEqualToString:@"all"] || [argument isEqualToString:@"none"];
        if (word && !single)
            return [NSString stringWithFormat:@"\"%@\" cannot be combined with indexes", argument];
        if (!word && !isIndex(argument))
            return [NSString stringWithFormat:@"\"%@\" is not a message index", argument];
    }
    return nil;
}

// Checks of particular commands beyond the number of arguments; nil when all is well.
+ (NSString *)problemWithCommand:(NSString *)command arguments:(NSArray *)arguments
{
    if ([command isEqualToString:@"select-messages"])
        return [self problemWithSelection:arguments];
    if ([command isEqualToString:@"add-account"] && [arguments count] == 2) {
        NSString *type = [arguments objectAtIndex:1];
        if (![type isEqualToString:@"POP"] && ![type isEqualToString:@"IMAP"])
            return [NSString stringWithFormat:@"account type \"%@\" is neither POP nor IMAP", type];
    }
    return nil;
}

+ (MHScenarioStep *)stepWithLine:(NSString *)line error:(NSString **)error
{
    if (error != NULL)
        *error = nil;
    NSString *trimmed = [line stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
    if ([trimmed length] == 0 || [trimmed hasPrefix:@"#"])
        return nil;
    NSString *problem = nil;
    MHScenarioStep *step = [[[self alloc] initWithLine:trimmed problem:&problem] autorelease];
    if (problem == nil)
        return step;
    if (error != NULL)
        *error = [NSString stringWithFormat:@"%@: %@", trimmed, problem];
    return nil;
}

+ (NSArray *)stepsInText:(NSString *)text error:(NSString **)error
{
    NSMutableArray *steps = [NSMutableArray array];
    NSArray *lines = [text componentsSeparatedByString:@"\n"];
    for (NSUInteger i = 0; i < [lines count]; i++) {
        NSString *problem = nil;
        MHScenarioStep *step = [self stepWithLine:[lines objectAtIndex:i] error:&problem];
        if (problem != nil) {
            if (error != NULL)
                *error = [NSString stringWithFormat:@"line %lu: %@", (unsigned long)(i + 1), problem];
            return nil;
        }
        if (step != nil)
            [steps addObject:step];
    }
    if (error != NULL)
        *error = nil;
    return steps;
}

- (id)initWithLine:(NSString *)line problem:(NSString **)problem
{
    if (nil == (self = [super init]))
        return nil;
    _line = [line copy];
    NSMutableArray *words = [[[[self class] wordsOfLine:line] mutableCopy] autorelease];
    if (words == nil) {
        *problem = @"a double quote is not closed";
        return self;
    }
    _command = [[words objectAtIndex:0] copy];
    [words removeObjectAtIndex:0];
    const CommandRule *rule = ruleForCommand(_command);
    if (rule == nullptr) {
        *problem = [NSString stringWithFormat:@"unknown command \"%@\"", _command];
        return self;
    }
    _action = rule->action;
    if (rule->contextualAt >= 0 && [words count] > (NSUInteger)rule->contextualAt
        && [[words objectAtIndex:(NSUInteger)rule->contextualAt] isEqualToString:@"contextual"]) {
        _contextual = YES;
        [words removeObjectAtIndex:(NSUInteger)rule->contextualAt];
    }
    _arguments = [words copy];
    if ([_arguments count] < rule->minArguments || [_arguments count] > rule->maxArguments) {
        *problem = usageOf(rule);
        return self;
    }
    NSString *detail = [[self class] problemWithCommand:_command arguments:_arguments];
    if (detail != nil)
        *problem = [NSString stringWithFormat:@"%@ (%@)", detail, usageOf(rule)];
    return self;
}

- (void)dealloc
{
    [_line release];
    [_command release];
    [_arguments release];
    [super dealloc];
}

- (NSString *)line
{
    return _line;
}

- (NSString *)command
{
    return _command;
}

- (NSArray *)arguments
{
    return _arguments;
}

- (BOOL)isContextual
{
    return _contextual;
}

- (SEL)action
{
    return _action;
}

@end
