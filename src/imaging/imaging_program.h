// One of the two imaging programs: whether it runs, its windows on the desktop, its hold of the camera.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "imaging/imaging_camera.h"
#include "imaging/open_documents.h"
#include "platform/background.h"
#include "platform/desktop_windows.h"
#include "platform/dispatch_object.h"
#include "platform/folder_map.h"

namespace vantrel::imaging {

/// What both programs share. All of it must outlive them.
struct ImagingBench {
    platform::EventLoop& loop;
    platform::Background& background;
    const platform::FolderMap& folders;
    platform::DesktopWindows& desktop;
    std::reference_wrapper<ImagingCamera> camera;
    OpenDocuments& documents;
};

class ImagingProgram {
  public:
    ImagingProgram(std::string name, const ImagingBench& bench) : bench_(bench), name_(std::move(name)) {}
    virtual ~ImagingProgram() = default;
    ImagingProgram(const ImagingProgram&) = delete;
    ImagingProgram& operator=(const ImagingProgram&) = delete;

    /// Opens its windows; nothing when it runs already.
    void start();
    /// Lets go of the camera and closes its windows. Objects that were handed out are dead from then on.
    void quit();
    bool running() const { return mainWindow_ != 0; }
    /// Tells one run from the next.
    int run() const { return run_; }

    /// Throws std::runtime_error when the other program holds the camera.
    void connect();
    void disconnect();
    bool connected() const { return bench_.camera.get().isConnectedTo(name_); }
    /// Throws std::runtime_error unless connected.
    void requireConnected() const;

    const ImagingBench& bench() const { return bench_; }

    /// Another camera from now on, which must outlive the program; its hold of the one in use ends.
    void useCamera(ImagingCamera& camera);

  protected:
    /// Opens the windows and returns the main one.
    virtual platform::WindowId openWindows() = 0;
    /// The camera was connected or disconnected.
    virtual void showConnection() {}
    /// The settings go back to what the program starts with.
    virtual void reset() = 0;

    /// Shows the picture in the window in front, or in one of its own.
    void showPicture(Picture picture, bool newWindow = false);

    ImagingBench bench_;

  private:
    std::string name_;
    platform::WindowId mainWindow_ = 0;
    int run_ = 0;
};

/// Puts a picture into the window in front, or into one of its own.
void showPicture(OpenDocuments& documents, Picture picture, bool newWindow = false);

/// An automation object of a program: it fails as that of a dead program does when the run of the program
/// that it belongs to has ended.
class ProgramObject : public platform::DispatchObject {
  public:
    ProgramObject(std::string className, const ImagingProgram& program)
        : DispatchObject(std::move(className)), program_(program), run_(program.run()) {}

    platform::Value get(const std::string& member, const platform::Arguments& arguments = {}) override;
    void put(const std::string& member, const platform::Value& value,
             const platform::Arguments& arguments = {}) override;
    platform::Value call(const std::string& member, const platform::Arguments& arguments = {}) override;

  protected:
    bool programLives() const { return program_.running() && program_.run() == run_; }

    /// Properties held in a field, which must live as long as this.
    void number(const std::string& name, int& field, int least, int most);
    /// "BinX", "BinY" and the filter's number, within what the camera has.
    void cameraNumbers(int& binX, int& binY, const std::string& filterName, int& filter);
    void flag(const std::string& name, bool& field);

  private:
    void number(const std::string& name, int& field, int least, std::function<int()> most);
    void requireLife() const;

    const ImagingProgram& program_;
    int run_;
};

}  // namespace vantrel::imaging
