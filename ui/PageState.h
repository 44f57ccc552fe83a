// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QString>

class QScrollArea;
class QWidget;

/**
 * What a refresh carries over from the stack page that it replaces: the focus and the scroll position.
 *
 * The new page has none of the old one's widgets, so a button is found again by its drive's object name and
 * its own.
 */
class PageState
{
public:
    /// A page without a scroll area, such as the blank one, has nothing to carry over.
    explicit PageState(const QWidget &page);

    /// To what had it on the old page, or else to a button of the same drive, or else to the first button.
    /// The new page need not be on screen yet.
    void moveFocusTo(const QWidget &page) const;
    /// Scrolls the new page, which is on screen in its size, to where the old one was. A button that has the
    /// focus anew comes into sight, and a look that differs from the old one is announced.
    void scrollAndAnnounce(const QWidget &page) const;

private:
    QWidget *sameWidget(const QWidget &page, QScrollArea *area) const;
    QWidget *driveOn(const QWidget &page) const;

    QString look; ///< the scroll area's accessible name
    QPoint scrollPosition;
    bool areaHasFocus = false;
    QString button; ///< object name of the button that has the focus
    QString drive; ///< object name of the button's parent
    int driveIndex = 0; ///< which one of the drives that share a serial number
};

/// Names the scroll area with the texts that are in it. Its buttons say them too, since a screen reader
/// speaks those with the focus: after "Finish", how the update went.
void describeLook(QScrollArea *area);

/// Lets the keyboard stop at the area itself only while it can scroll: nothing shows the focus on it.
void takeFocusToScroll(QScrollArea *area);

/// Has the whole drive in sight, picture and texts included, when the keyboard moves the focus to a button.
void followFocus(QScrollArea *area);
