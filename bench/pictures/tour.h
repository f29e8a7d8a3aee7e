#pragma once

class ShowOperator;
struct PictureUnits;

/// Each leads through some of the console's windows and states, in this order, and takes pictures.
void TourStart(ShowOperator& op, const PictureUnits& units);
void TourShow(ShowOperator& op);
void TourMarks(ShowOperator& op);
void TourMix(ShowOperator& op);
void TourMenus(ShowOperator& op);
void TourBuilder(ShowOperator& op);
void TourAssets(ShowOperator& op, const PictureUnits& units);
void TourUnits(ShowOperator& op, const PictureUnits& units);
void TourLoss(ShowOperator& op, const PictureUnits& units);
