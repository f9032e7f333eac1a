#import "MHMailQuestions.h"

#include <objc/runtime.h>

#include <map>
#include <string>
#include <utility>

namespace {

// How often each question was put to each subject, by the question's name and the subject's
// address: a subject Mail lets go of is not kept alive here.
typedef std::map<std::pair<std::string, const void *>, NSUInteger> Asked;
Asked *asked;

void note(SEL question, id subject)
{
    (*asked)[std::make_pair(std::string(sel_getName(question)), (const void *)subject)]++;
}

id askObject(id self, SEL _cmd);
BOOL askFlag(id self, SEL _cmd);
int askNumber(id self, SEL _cmd);
BOOL askFlagOfNumber(id self, SEL _cmd, int number);
id askIcon(id self, SEL _cmd, id mailbox, BOOL smallSize);

// Each method is replaced in the class that defines it; its subclasses reach the counter.
struct Counted {
    const char *className;
    const char *selector;
    bool classMethod;
    IMP counter;
    SEL question = NULL;
    Class owner = Nil; // the class, or for a class method its metaclass
    IMP original = NULL;
} counted[] = {
    { "MailboxUid", "displayName", false, (IMP)askObject },
    { "MailboxUid", "account", false, (IMP)askObject },
    { "MailboxUid", "ancestralAccount", false, (IMP)askObject },
    { "MailboxUid", "accountRelativePath", false, (IMP)askObject },
    { "MailboxUid", "fullPath", false, (IMP)askObject },
    { "MailboxUid", "parent", false, (IMP)askObject },
    { "MailboxUid", "isValid", false, (IMP)askFlag },
    { "MailboxUid", "type", false, (IMP)askNumber },
    { "MailboxUid", "typeIsGeneric:", true, (IMP)askFlagOfNumber },
    { "MailAccount", "displayName", false, (IMP)askObject },
    { "MailAccount", "allMailboxUids", false, (IMP)askObject },
    { "MailAccount", "activeAccounts", true, (IMP)askObject },
    { "IMAPAccount", "serverPathPrefix", false, (IMP)askObject },
    { "MailboxesController", "iconForMailboxUid:smallSize:", true, (IMP)askIcon },
};

IMP originalOf(id receiver, SEL question)
{
    for (Class owner = object_getClass(receiver); owner != Nil; owner = class_getSuperclass(owner)) {
        for (const Counted &entry : counted) {
            if (entry.owner == owner && sel_isEqual(entry.question, question))
                return entry.original;
        }
    }
    return NULL;
}

id askObject(id self, SEL _cmd)
{
    note(_cmd, self);
    return ((id(*)(id, SEL))originalOf(self, _cmd))(self, _cmd);
}

BOOL askFlag(id self, SEL _cmd)
{
    note(_cmd, self);
    return ((BOOL(*)(id, SEL))originalOf(self, _cmd))(self, _cmd);
}

int askNumber(id self, SEL _cmd)
{
    note(_cmd, self);
    return ((int (*)(id, SEL))originalOf(self, _cmd))(self, _cmd);
}

BOOL askFlagOfNumber(id self, SEL _cmd, int number)
{
    note(_cmd, self);
    return ((BOOL(*)(id, SEL, int))originalOf(self, _cmd))(self, _cmd, number);
}

id askIcon(id self, SEL _cmd, id mailbox, BOOL smallSize)
{
    note(_cmd, mailbox);
    return ((id(*)(id, SEL, id, BOOL))originalOf(self, _cmd))(self, _cmd, mailbox, smallSize);
}

void startCounting(void)
{
    asked = new Asked;
    for (Counted &entry : counted) {
        Class mailClass = NSClassFromString(@(entry.className));
        entry.question = sel_registerName(entry.selector);
        entry.owner = entry.classMethod ? object_getClass(mailClass) : mailClass;
        Method method = class_getInstanceMethod(entry.owner, entry.question);
        entry.original = method_setImplementation(method, entry.counter);
    }
}

} // namespace

void MHForgetMailQuestions(void)
{
    if (asked == nullptr)
        startCounting();
    asked->clear();
}

NSUInteger MHMailQuestionCount(SEL question, id subject)
{
    if (asked == nullptr)
        return 0;
    NSUInteger count = 0;
    for (const auto &entry : *asked) {
        bool sameQuestion = question == NULL || entry.first.first == sel_getName(question);
        if (sameQuestion && (subject == nil || entry.first.second == (const void *)subject))
            count += entry.second;
    }
    return count;
}
