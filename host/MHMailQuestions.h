/*
 * The questions put to Mail about its mailboxes and accounts (names, places, kinds, validity,
 * icons, the accounts in use), counted so that a test can state how much Mail is asked. Mail
 * itself counts nothing: counting starts at the first MHForgetMailQuestions() and goes on for
 * the life of the process. Counting keeps no object alive.
 */
#import <Foundation/Foundation.h>

/* Starts counting, once per process, and forgets the questions counted so far. */
void MHForgetMailQuestions(void);

/* How often the question (NULL: any) was put to the subject (nil: to anyone) since the last
   MHForgetMailQuestions(). The subject is the receiver, or for an icon the mailbox it was
   asked for. */
NSUInteger MHMailQuestionCount(SEL question, id subject);
