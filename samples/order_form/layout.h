// What the order form shows, for the real Windows program and for its twin on the scripted desktop alike: one table of
// its controls, from which both are built.
#pragma once

#include "platform/platform.h"

namespace order_form {

inline constexpr const WCHAR* kWindowClass = TEXT("OrderForm");
inline constexpr const WCHAR* kPanelClass = TEXT("OrderFormPanel");
inline constexpr const WCHAR* kTitle = TEXT("Order form");
inline constexpr int kWidth = 460;
inline constexpr int kHeight = 420;

enum ControlId {
  kCustomerPanel = 100,
  kName = 101,
  kStreet = 102,
  kCity = 103,
  kOrderPanel = 200,
  kArticle = 201,
  kNote = 202,    // several lines
  kPhone = 203,   // reformats what it is given: digits in groups of three, separated by blanks
  kSecret = 204,  // shows only stars, so that a pasted text never appears in it
  kShippingList = 205,
  kSubmit = 301,
  kClear = 302,
  kStatus = 401,  // read-only; shows "Submitted: <name> / <article>" after Submit, "Ready" before
};

enum class Kind { Panel, Label, Edit, MultilineEdit, ReadOnlyEdit, Button, List };

struct Control {
  int id;
  int parent;  // id of the panel it lies in; 0: the window itself
  Kind kind;
  const WCHAR* text;
  // Relative to the parent's client area, pixels.
  int x, y, width, height;
};

// In tab and tree order.
inline constexpr Control kControls[] = {
    {kCustomerPanel, 0, Kind::Panel, TEXT("Customer"), 10, 10, 430, 110},
    {0, kCustomerPanel, Kind::Label, TEXT("Name"), 10, 14, 80, 20},
    {kName, kCustomerPanel, Kind::Edit, TEXT(""), 100, 10, 310, 24},
    {0, kCustomerPanel, Kind::Label, TEXT("Street"), 10, 46, 80, 20},
    {kStreet, kCustomerPanel, Kind::Edit, TEXT(""), 100, 42, 310, 24},
    {0, kCustomerPanel, Kind::Label, TEXT("City"), 10, 78, 80, 20},
    {kCity, kCustomerPanel, Kind::Edit, TEXT(""), 100, 74, 310, 24},
    {kOrderPanel, 0, Kind::Panel, TEXT("Order"), 10, 130, 430, 190},
    {0, kOrderPanel, Kind::Label, TEXT("Article"), 10, 14, 80, 20},
    {kArticle, kOrderPanel, Kind::Edit, TEXT(""), 100, 10, 310, 24},
    {0, kOrderPanel, Kind::Label, TEXT("Note"), 10, 46, 80, 20},
    {kNote, kOrderPanel, Kind::MultilineEdit, TEXT(""), 100, 42, 310, 48},
    {0, kOrderPanel, Kind::Label, TEXT("Phone"), 10, 100, 80, 20},
    {kPhone, kOrderPanel, Kind::Edit, TEXT(""), 100, 96, 310, 24},
    {0, kOrderPanel, Kind::Label, TEXT("Secret"), 10, 132, 80, 20},
    {kSecret, kOrderPanel, Kind::Edit, TEXT(""), 100, 128, 110, 24},
    {kShippingList, kOrderPanel, Kind::List, TEXT(""), 230, 126, 180, 54},
    {kSubmit, 0, Kind::Button, TEXT("Submit"), 10, 330, 100, 28},
    {kClear, 0, Kind::Button, TEXT("Clear"), 120, 330, 100, 28},
    {kStatus, 0, Kind::ReadOnlyEdit, TEXT("Ready"), 230, 330, 210, 28},
};

// Rows of the shipping list: parts without a window of their own.
inline constexpr const WCHAR* kShippingRows[] = {TEXT("Post"), TEXT("Courier"), TEXT("Pick-up")};

}  // namespace order_form
