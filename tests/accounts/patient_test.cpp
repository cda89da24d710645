// The patient record: what a let of PatientID loads, and what it leaves.
#include "frame/patient.h"

#include <gtest/gtest.h>

#include "account_fixture.h"
#include "platform/host/host_services.h"

namespace orv::testing {
namespace {

using PatientRecordTest = AccountFixture;

TEST_F(PatientRecordTest, LoadsTheRow) {
  clsPatient patient;
  patient.Connection(conn_);
  patient.PatientID(1);
  EXPECT_EQ(patient.PatientID(), 1);
  EXPECT_EQ(patient.FirstName(), "Claire");
  EXPECT_EQ(patient.LastName(), "Tremblay");
  EXPECT_EQ(patient.MiddleInital(), "J");
  EXPECT_EQ(patient.FullName(), "Tremblay, Claire");
  EXPECT_EQ(patient.Address(), "12 Main St\r\nOttawa, ON\r\nK1A 0B1");
  EXPECT_EQ(patient.SIN(), "046454286");
  EXPECT_EQ(patient.SignupDate(), Day(2019, 4, 2));
  EXPECT_EQ(patient.PrimaryEmployerID(), 11);
  EXPECT_EQ(patient.SecondaryEmployerID(), 12);
  EXPECT_EQ(patient.TertiaryEmployerID(), 13);
  EXPECT_EQ(patient.OfficeID(), 2);
}

TEST_F(PatientRecordTest, NullColumnsAndMissingKeys) {
  clsPatient patient;
  patient.Connection(conn_);
  patient.PatientID(1);
  patient.SecondaryAddress("Cottage road");

  // Luc: NULL middle initial, address, SIN, signup date, employers, office.
  patient.PatientID(2);
  EXPECT_EQ(patient.FirstName(), "Luc");
  EXPECT_EQ(patient.MiddleInital(), "");
  EXPECT_EQ(patient.Address(), "");
  EXPECT_EQ(patient.SIN(), "");
  EXPECT_EQ(patient.SignupDate(), DateTime());
  EXPECT_EQ(patient.PrimaryEmployerID(), 0);
  EXPECT_EQ(patient.OfficeID(), 0);
  EXPECT_EQ(patient.SecondaryAddress(), "") << "no column holds it; the load clears it";

  // A key that does not exist keeps the ID and leaves everything else.
  patient.PatientID(1);
  patient.PatientID(404);
  EXPECT_EQ(patient.PatientID(), 404);
  EXPECT_EQ(patient.FirstName(), "Claire");
  EXPECT_EQ(patient.OfficeID(), 2);
}

TEST_F(PatientRecordTest, EveryLetReadsAgainAndWritesNothing) {
  clsPatient patient;
  patient.Connection(conn_);
  patient.PatientID(3);
  patient.FirstName("Changed here");
  patient.OfficeID(9);
  EXPECT_EQ(patient.FirstName(), "Changed here");

  // The plain setters wrote nothing: the same ID read again gives the row,
  // which meanwhile changed in the database.
  Exec("UPDATE Patient SET LastName = 'Singh-Roy' WHERE ID = 3");
  patient.PatientID(3);
  EXPECT_EQ(patient.FirstName(), "Priya");
  EXPECT_EQ(patient.LastName(), "Singh-Roy");
  EXPECT_EQ(patient.OfficeID(), 1);
}

TEST_F(PatientRecordTest, NoConnection) {
  host::RecordingHost host;
  clsPatient patient;
  patient.SetHostServices(&host);
  patient.FirstName("Kept");
  patient.PatientID(1);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt, "No Connection available for Database");
  EXPECT_EQ(patient.PatientID(), 1);
  EXPECT_EQ(patient.FirstName(), "Kept");
  EXPECT_EQ(patient.OfficeID(), 0);
}

}  // namespace
}  // namespace orv::testing
