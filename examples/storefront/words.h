/*
 * What the buyer is told. One place for every sentence about the outcome of a job: they can be read side by side.
 */
#ifndef STOREFRONT_WORDS_H
#define STOREFRONT_WORDS_H

#include "shop.h"

typedef enum Mood { MoodPlain, MoodGood, MoodWarning, MoodBad } Mood;

typedef struct Words {
  Mood mood;
  wchar_t title[100];
  wchar_t text[400];
} Words;

/* What came of a job. `isKept` says whether the list of past sales could be written. */
void DescribeOutcome(const Job* job, const Settings* settings, BOOL isKept, Words* words);

/* Sets words that depend on nothing. */
void SetWords(Words* words, Mood mood, const wchar_t* title, const wchar_t* text);

/* The words of a past sale's state for the list. */
const wchar_t* DescribeState(SaleState state);

#endif
