/*
 * VariableDlg.cpp: the plug-in's one modal dialog: a text of any length, an optional
 * icon with its caption, one to three buttons. The layout is computed here from the
 * DLOG 23005 resource, grown to fit the text, and shown by the platform's dialog
 * service.
 *
 * Resources it reads from the plug-in's resource file:
 *   STR# 15000, indexes 35 to 38: the captions of the stop, note and two caution kinds.
 *   DLOG 23005, one item per index from 1, each "top left bottom right" in pixels:
 *     "window 0 0 130 420"              the dialog window
 *     "item 1 button 90 330 110 400"    buttons 1, 2 and 3 (items 1..3)
 *     "item 5 user 45 20 75 400"        the text area
 *     "item 6 icon 10 20 42 52"         the icon
 *     "item 7 text 15 60 31 400"        the caption
 *   ("item" may be left out: "5 user 45 20 75 400" reads the same.) The window and
 *   items 1, 2, 3 and 5 are required; without them the dialog cannot be made.
 */
#include "ui/Alerts.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "text/ErrorCodes.h"
#include "text/TextUtils.h"
#include "ui/PluginResources.h"

enum {
    kVariableDlgID = 23005,
    kCaptionStrings = 15000,
    kMaxDlogLines = 32,
    kNoIconRaise = 15,
    kItemText = 5,
    kItemIcon = 6,
    kItemCaption = 7,
    kTitleSize = 256
};

struct DlogLayout {
    Rect window;
    Rect items[8];          /* indexed by item number */
    bool haveWindow;
    bool haveItem[8];
};

/* One line of the DLOG text: "window t l b r" or "[item] n kind t l b r". */
static void ParseDlogLine(const char *line, DlogLayout *layout)
{
    char word[32];
    int t, l, b, r, item;
    if (sscanf(line, " window %d %d %d %d", &t, &l, &b, &r) == 4) {
        layout->window = Rect{(int16_t)t, (int16_t)l, (int16_t)b, (int16_t)r};
        layout->haveWindow = true;
        return;
    }
    if (strncmp(line + strspn(line, " \t"), "item", 4) == 0)
        line += strspn(line, " \t") + 4;
    if (sscanf(line, " %d %31s %d %d %d %d", &item, word, &t, &l, &b, &r) == 6 && item >= 1 && item <= 7) {
        layout->items[item] = Rect{(int16_t)t, (int16_t)l, (int16_t)b, (int16_t)r};
        layout->haveItem[item] = true;
    }
}

static bool LoadDlogLayout(DlogLayout *layout)
{
    memset(layout, 0, sizeof *layout);
    char line[256];
    for (short index = 1; index <= kMaxDlogLines; index++) {
        if (!GetPluginResourceText(FOUR_CHAR('D', 'L', 'O', 'G'), kVariableDlgID, index, line, sizeof line))
            break;
        ParseDlogLine(line, layout);
    }
    return layout->haveWindow && layout->haveItem[1] && layout->haveItem[2] && layout->haveItem[3] &&
           layout->haveItem[kItemText];
}

static bool TitleIs(const char *title, const char *upperWord)
{
    char copy[kTitleSize];
    strncpy(copy, title ? title : "", sizeof copy - 1);
    copy[sizeof copy - 1] = 0;
    return strcmp(StrToUpper(copy), upperWord) == 0;
}

static bool HasTitle(const char *title)
{
    return title && title[0];
}

static int16_t ChooseCancelButton(const char *button1, const char *button2, const char *button3)
{
    static const char *const kCancelWords[] = {"CANCEL", "NO", "BACK"};
    const char *titles[3] = {button1, button2, button3};
    for (const char *word : kCancelWords)
        for (int i = 0; i < 3; i++)
            if (TitleIs(titles[i], word))
                return (int16_t)(i + 1);
    return HasTitle(button2) ? 2 : 1;
}

/* Icon, caption index and beep of a dialog kind. */
static void KindLook(char kind, int16_t *icon, short *captionIndex, bool *beep)
{
    *icon = -1;
    *captionIndex = 0;
    *beep = true;
    switch (kind) {
    case 'S': case 's': *icon = 0; *captionIndex = 35; break;
    case 'N': case 'n': *icon = 1; *captionIndex = 36; break;
    case 'W': case 'w': *icon = 2; *captionIndex = 37; break;
    case 'C': case 'c': *icon = 2; *captionIndex = 38; break;
    default: *beep = false; break;
    }
}

static void MoveRectDown(Rect *r, int16_t by)
{
    r->top = (int16_t)(r->top + by);
    r->bottom = (int16_t)(r->bottom + by);
}

short LayoutVariableDlg(char kind, const char *text, const char *button1, const char *button2,
                        const char *button3, DialogSpec *theSpec, char *caption, long captionSize)
{
    memset(theSpec, 0, sizeof *theSpec);
    theSpec->kind = kind;
    theSpec->text = text ? text : "";
    theSpec->cancelButton = ChooseCancelButton(button1, button2, button3);
    theSpec->defaultButton = 1;

    short captionIndex;
    bool beep;
    KindLook(kind, &theSpec->icon, &captionIndex, &beep);
    theSpec->beep = beep;
    if (caption && captionSize > 0) {
        caption[0] = 0;
        if (captionIndex) {
            char full[kTitleSize];
            my_getindstring(full, kCaptionStrings, captionIndex);
            strncpy(caption, full, (size_t)captionSize - 1);
            caption[captionSize - 1] = 0;
        }
    }
    theSpec->caption = caption ? caption : "";

    DlogLayout layout;
    if (!LoadDlogLayout(&layout))
        return kMissingErr;
    theSpec->window = layout.window;
    theSpec->textItem = layout.items[kItemText];
    for (int i = 0; i < 3; i++)
        theSpec->buttonItems[i] = layout.items[i + 1];
    if (theSpec->icon < 0) {
        theSpec->textItem.top = (int16_t)(theSpec->textItem.top - kNoIconRaise);
    } else {
        theSpec->iconItem = layout.items[kItemIcon];
        theSpec->captionItem = layout.items[kItemCaption];
    }

    int16_t width = (int16_t)(theSpec->textItem.right - theSpec->textItem.left);
    int32_t lines = TEMeasureLines(theSpec->text, (int32_t)strlen(theSpec->text), width);
    int16_t height = (int16_t)(lines * TELineHeight());
    theSpec->textHeight = height;
    theSpec->window.bottom = (int16_t)(theSpec->window.bottom + height);
    theSpec->textItem.bottom = (int16_t)(theSpec->textItem.bottom + height);

    const char *titles[3] = {button1, button2, button3};
    for (int i = 0; i < 3; i++) {
        MoveRectDown(&theSpec->buttonItems[i], height);
        theSpec->buttons[i] = titles[i] ? titles[i] : "";
        theSpec->shown[i] = i == 0 || HasTitle(titles[i]);
    }
    return 0;
}

short VariableDlg(char kind, const char *text, const char *button1, const char *button2, const char *button3)
{
    DialogSpec theSpec;
    char caption[kTitleSize];
    short err = LayoutVariableDlg(kind, text, button1, button2, button3, &theSpec, caption, sizeof caption);
    if (theSpec.beep)
        SysBeep(5);
    if (err)
        return kMissingErr;
    return RunModalDialog(&theSpec);
}
