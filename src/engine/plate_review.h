// What the operator can still do with a measurement's plates: leave some out, have one redone, and choose
// which of the two results counts.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/frm_plates.h"
#include "engine/measurement_result.h"
#include "engine/taken_plate.h"

namespace vantrel::engine {

/// The window always shows the last measurement; it can be changed while it is offered.
class PlateReview {
  public:
    PlateReview(frmPlates& form, const Services& services);

    /// Calculates and tells the result of a new measurement; its plates count, and which result counts is
    /// what the options say. At least three plates; `exposureSeconds` were spent on each.
    void begin(std::vector<TakenPlate> plates, double exposureSeconds);
    /// Calculates anew with the plate of this number replaced.
    void replace(const TakenPlate& plate);

    /// As things stand now.
    const PolarErrorResult& result() const { return axis_.shown; }

    /// All that the plates that count came to.
    const MeasuredAxis& axis() const { return axis_; }

    /// The operator can change things while one lives.
    class Offered {
      public:
        explicit Offered(PlateReview& review) : review_(review) { review_.setOffered(true); }
        ~Offered() { review_.setOffered(false); }
        Offered(const Offered&) = delete;
        Offered& operator=(const Offered&) = delete;

      private:
        PlateReview& review_;
    };

    /// The operator wants a plate taken again.
    bool redoRequested() const { return redo_.has_value(); }
    /// That plate, as it was taken; the request is forgotten.
    std::optional<TakenPlate> takeRedoRequest();

  private:
    void setOffered(bool offered);
    void choosePlate(std::size_t row);
    void calculate(const std::string& note);
    void showPlates();
    std::vector<TakenPlate> counting() const;

    frmPlates& form_;
    Services services_;
    MeasurementResult calculation_;

    std::vector<TakenPlate> plates_;
    double exposureSeconds_ = 0;
    MeasuredAxis axis_;
    std::optional<int> redo_;  // a plate's number
    bool filling_ = false;     // the boxes change by our own doing
};

}  // namespace vantrel::engine
