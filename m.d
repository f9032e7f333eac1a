m: m.mm /usr/include/GNUstep/Foundation/Foundation.h \
  /usr/include/GNUstep/GNUstepBase/GSVersionMacros.h \
  /usr/include/GNUstep/GNUstepBase/GSConfig.h \
  /usr/include/GNUstep/Foundation/FoundationErrors.h \
  /usr/include/GNUstep/Foundation/NSObject.h \
  /usr/include/GNUstep/Foundation/NSObjCRuntime.h \
  /usr/include/GNUstep/GNUstepBase/GNUstep.h \
  /usr/include/GNUstep/GNUstepBase/GSBlocks.h \
  /usr/include/GNUstep/GNUstepBase/GSObjCRuntime.h \
  /usr/include/GNUstep/Foundation/NSZone.h \
  /usr/include/GNUstep/Foundation/NSDate.h \
  /usr/include/GNUstep/GNUstepBase/NSObject+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/FoundationLegacySwiftCompatibility.h \
  /usr/include/GNUstep/Foundation/NSDebug.h \
  /usr/include/GNUstep/GNUstepBase/NSDebug+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSProcessInfo.h \
  /usr/include/GNUstep/GNUstepBase/NSProcessInfo+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSAffineTransform.h \
  /usr/include/GNUstep/Foundation/NSGeometry.h \
  /usr/include/GNUstep/Foundation/NSString.h \
  /usr/include/GNUstep/Foundation/NSRange.h \
  /usr/include/GNUstep/GNUstepBase/NSString+GNUstepBase.h \
  /usr/include/GNUstep/GNUstepBase/NSMutableString+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSAppleEventDescriptor.h \
  /usr/include/GNUstep/Foundation/NSAppleEventManager.h \
  /usr/include/GNUstep/Foundation/NSAppleScript.h \
  /usr/include/GNUstep/Foundation/NSArchiver.h \
  /usr/include/GNUstep/Foundation/NSCoder.h \
  /usr/include/GNUstep/Foundation/NSSet.h \
  /usr/include/GNUstep/Foundation/NSEnumerator.h \
  /usr/include/GNUstep/Foundation/NSArray.h \
  /usr/include/GNUstep/GNUstepBase/NSArray+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSAttributedString.h \
  /usr/include/GNUstep/Foundation/NSDictionary.h \
  /usr/include/GNUstep/GNUstepBase/NSAttributedString+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSAutoreleasePool.h \
  /usr/include/GNUstep/Foundation/NSBackgroundActivityScheduler.h \
  /usr/include/GNUstep/Foundation/NSBundle.h \
  /usr/include/GNUstep/GNUstepBase/NSBundle+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSByteOrder.h \
  /usr/include/GNUstep/Foundation/NSCache.h \
  /usr/include/GNUstep/Foundation/NSCalendar.h \
  /usr/include/GNUstep/Foundation/NSCalendarDate.h \
  /usr/include/GNUstep/GNUstepBase/NSCalendarDate+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSCharacterSet.h \
  /usr/include/GNUstep/Foundation/NSClassDescription.h \
  /usr/include/GNUstep/Foundation/NSException.h \
  /usr/include/GNUstep/Foundation/NSComparisonPredicate.h \
  /usr/include/GNUstep/Foundation/NSExpression.h \
  /usr/include/GNUstep/Foundation/NSPredicate.h \
  /usr/include/GNUstep/Foundation/NSCompoundPredicate.h \
  /usr/include/GNUstep/Foundation/NSConnection.h \
  /usr/include/GNUstep/Foundation/NSTimer.h \
  /usr/include/GNUstep/Foundation/NSRunLoop.h \
  /usr/include/GNUstep/Foundation/NSMapTable.h \
  /usr/include/GNUstep/Foundation/NSPointerFunctions.h \
  /usr/include/GNUstep/Foundation/NSData.h \
  /usr/include/GNUstep/Foundation/NSSerialization.h \
  /usr/include/GNUstep/GNUstepBase/NSData+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSDateComponentsFormatter.h \
  /usr/include/GNUstep/Foundation/NSFormatter.h \
  /usr/include/GNUstep/Foundation/NSDateFormatter.h \
  /usr/include/GNUstep/Foundation/NSDateInterval.h \
  /usr/include/GNUstep/Foundation/NSDateIntervalFormatter.h \
  /usr/include/GNUstep/Foundation/NSDecimalNumber.h \
  /usr/include/GNUstep/Foundation/NSDecimal.h \
  /usr/include/GNUstep/Foundation/NSValue.h \
  /usr/include/GNUstep/GNUstepBase/NSNumber+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSDistantObject.h \
  /usr/include/GNUstep/Foundation/NSProxy.h \
  /usr/include/GNUstep/Foundation/NSDistributedLock.h \
  /usr/include/GNUstep/Foundation/NSDistributedNotificationCenter.h \
  /usr/include/GNUstep/Foundation/NSLock.h \
  /usr/include/GNUstep/GNUstepBase/NSLock+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSNotification.h \
  /usr/include/GNUstep/Foundation/NSEnergyFormatter.h \
  /usr/include/GNUstep/Foundation/NSError.h \
  /usr/include/GNUstep/Foundation/NSExtensionContext.h \
  /usr/include/GNUstep/Foundation/NSExtensionItem.h \
  /usr/include/GNUstep/Foundation/NSExtensionRequestHandling.h \
  /usr/include/GNUstep/Foundation/NSFileCoordinator.h \
  /usr/include/GNUstep/Foundation/NSURL.h \
  /usr/include/GNUstep/Foundation/NSURLHandle.h \
  /usr/include/GNUstep/GNUstepBase/NSURL+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSFileHandle.h \
  /usr/include/GNUstep/GNUstepBase/NSFileHandle+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSFileManager.h \
  /usr/include/GNUstep/Foundation/NSPathUtilities.h \
  /usr/include/GNUstep/Foundation/NSFilePresenter.h \
  /usr/include/GNUstep/Foundation/NSFileVersion.h \
  /usr/include/GNUstep/Foundation/NSFileWrapper.h \
  /usr/include/GNUstep/Foundation/NSGarbageCollector.h \
  /usr/include/GNUstep/Foundation/NSHashTable.h \
  /usr/include/GNUstep/Foundation/NSHFSFileTypes.h \
  /usr/include/GNUstep/Foundation/NSHost.h \
  /usr/include/GNUstep/Foundation/NSHTTPCookie.h \
  /usr/include/GNUstep/Foundation/NSHTTPCookieStorage.h \
  /usr/include/GNUstep/Foundation/NSIndexPath.h \
  /usr/include/GNUstep/Foundation/NSIndexSet.h \
  /usr/include/GNUstep/Foundation/NSInvocation.h \
  /usr/include/GNUstep/Foundation/NSMethodSignature.h \
  /usr/include/GNUstep/Foundation/NSInvocationOperation.h \
  /usr/include/GNUstep/Foundation/NSOperation.h \
  /usr/include/GNUstep/Foundation/NSISO8601DateFormatter.h \
  /usr/include/GNUstep/Foundation/NSItemProvider.h \
  /usr/include/GNUstep/Foundation/NSItemProviderReadingWriting.h \
  /usr/include/GNUstep/Foundation/NSJSONSerialization.h \
  /usr/include/GNUstep/Foundation/NSKeyedArchiver.h \
  /usr/include/GNUstep/Foundation/NSPropertyList.h \
  /usr/include/GNUstep/Foundation/NSKeyValueCoding.h \
  /usr/include/GNUstep/Foundation/NSKeyValueObserving.h \
  /usr/include/GNUstep/Foundation/NSLengthFormatter.h \
  /usr/include/GNUstep/Foundation/NSLinguisticTagger.h \
  /usr/include/GNUstep/Foundation/NSLocale.h \
  /usr/include/GNUstep/Foundation/NSMeasurement.h \
  /usr/include/GNUstep/Foundation/NSMeasurementFormatter.h \
  /usr/include/GNUstep/Foundation/NSMetadata.h \
  /usr/include/GNUstep/Foundation/NSMetadataAttributes.h \
  /usr/include/GNUstep/Foundation/NSNotificationQueue.h \
  /usr/include/GNUstep/Foundation/NSNetServices.h \
  /usr/include/GNUstep/GNUstepBase/NSNetServices+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSNull.h \
  /usr/include/GNUstep/Foundation/NSNumberFormatter.h \
  /usr/include/GNUstep/Foundation/NSObjectScripting.h \
  /usr/include/GNUstep/Foundation/NSOrderedSet.h \
  /usr/include/GNUstep/Foundation/NSOrthography.h \
  /usr/include/GNUstep/Foundation/NSPersonNameComponents.h \
  /usr/include/GNUstep/Foundation/NSPersonNameComponentsFormatter.h \
  /usr/include/GNUstep/Foundation/NSPointerArray.h \
  /usr/include/GNUstep/Foundation/NSPortCoder.h \
  /usr/include/GNUstep/Foundation/NSPortMessage.h \
  /usr/include/GNUstep/Foundation/NSPort.h \
  /usr/include/GNUstep/Foundation/NSPortNameServer.h \
  /usr/include/GNUstep/Foundation/NSProgress.h \
  /usr/include/GNUstep/Foundation/NSProtocolChecker.h \
  /usr/include/GNUstep/Foundation/NSRegularExpression.h \
  /usr/include/GNUstep/Foundation/NSScanner.h \
  /usr/include/GNUstep/Foundation/NSScriptClassDescription.h \
  /usr/include/GNUstep/Foundation/NSScriptCoercionHandler.h \
  /usr/include/GNUstep/Foundation/NSScriptCommand.h \
  /usr/include/GNUstep/Foundation/NSScriptCommandDescription.h \
  /usr/include/GNUstep/Foundation/NSScriptExecutionContext.h \
  /usr/include/GNUstep/Foundation/NSScriptKeyValueCoding.h \
  /usr/include/GNUstep/Foundation/NSScriptObjectSpecifiers.h \
  /usr/include/GNUstep/Foundation/NSScriptStandardSuiteCommands.h \
  /usr/include/GNUstep/Foundation/NSScriptSuiteRegistry.h \
  /usr/include/GNUstep/Foundation/NSScriptWhoseTests.h \
  /usr/include/GNUstep/Foundation/NSSortDescriptor.h \
  /usr/include/GNUstep/Foundation/NSSpellServer.h \
  /usr/include/GNUstep/Foundation/NSStream.h \
  /usr/include/GNUstep/GNUstepBase/NSStream+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSTask.h \
  /usr/include/GNUstep/GNUstepBase/NSTask+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSTextCheckingResult.h \
  /usr/include/GNUstep/Foundation/NSThread.h \
  /usr/include/GNUstep/GNUstepBase/NSThread+GNUstepBase.h \
  /usr/include/GNUstep/Foundation/NSTimeZone.h \
  /usr/include/GNUstep/Foundation/NSUbiquitousKeyValueStore.h \
  /usr/include/GNUstep/Foundation/NSUndoManager.h \
  /usr/include/GNUstep/Foundation/NSUnit.h \
  /usr/include/GNUstep/Foundation/NSUserActivity.h \
  /usr/include/GNUstep/Foundation/NSURLAuthenticationChallenge.h \
  /usr/include/GNUstep/Foundation/NSURLCache.h \
  /usr/include/GNUstep/Foundation/NSURLConnection.h \
  /usr/include/GNUstep/Foundation/NSURLCredential.h \
  /usr/include/GNUstep/Foundation/NSURLCredentialStorage.h \
  /usr/include/GNUstep/Foundation/NSURLDownload.h \
  /usr/include/GNUstep/Foundation/NSURLError.h \
  /usr/include/GNUstep/Foundation/NSURLProtectionSpace.h \
  /usr/include/GNUstep/Foundation/NSURLProtocol.h \
  /usr/include/GNUstep/Foundation/NSURLRequest.h \
  /usr/include/GNUstep/Foundation/NSURLResponse.h \
  /usr/include/GNUstep/Foundation/NSURLSession.h \
  /usr/include/GNUstep/Foundation/NSUserDefaults.h \
  /usr/include/GNUstep/Foundation/NSUserNotification.h \
  /usr/include/GNUstep/Foundation/NSUUID.h \
  /usr/include/GNUstep/Foundation/NSValueTransformer.h \
  /usr/include/GNUstep/Foundation/NSXMLDocument.h \
  /usr/include/GNUstep/Foundation/NSXMLNode.h \
  /usr/include/GNUstep/Foundation/NSXMLNodeOptions.h \
  /usr/include/GNUstep/Foundation/NSXMLDTD.h \
  /usr/include/GNUstep/Foundation/NSXMLDTDNode.h \
  /usr/include/GNUstep/Foundation/NSXMLElement.h \
  /usr/include/GNUstep/Foundation/NSXMLParser.h \
  /usr/include/GNUstep/Foundation/NSXPCConnection.h

/usr/include/GNUstep/Foundation/Foundation.h:

/usr/include/GNUstep/GNUstepBase/GSVersionMacros.h:

/usr/include/GNUstep/GNUstepBase/GSConfig.h:

/usr/include/GNUstep/Foundation/FoundationErrors.h:

/usr/include/GNUstep/Foundation/NSObject.h:

/usr/include/GNUstep/Foundation/NSObjCRuntime.h:

/usr/include/GNUstep/GNUstepBase/GNUstep.h:

/usr/include/GNUstep/GNUstepBase/GSBlocks.h:

/usr/include/GNUstep/GNUstepBase/GSObjCRuntime.h:

/usr/include/GNUstep/Foundation/NSZone.h:

/usr/include/GNUstep/Foundation/NSDate.h:

/usr/include/GNUstep/GNUstepBase/NSObject+GNUstepBase.h:

/usr/include/GNUstep/Foundation/FoundationLegacySwiftCompatibility.h:

/usr/include/GNUstep/Foundation/NSDebug.h:

/usr/include/GNUstep/GNUstepBase/NSDebug+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSProcessInfo.h:

/usr/include/GNUstep/GNUstepBase/NSProcessInfo+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSAffineTransform.h:

/usr/include/GNUstep/Foundation/NSGeometry.h:

/usr/include/GNUstep/Foundation/NSString.h:

/usr/include/GNUstep/Foundation/NSRange.h:

/usr/include/GNUstep/GNUstepBase/NSString+GNUstepBase.h:

/usr/include/GNUstep/GNUstepBase/NSMutableString+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSAppleEventDescriptor.h:

/usr/include/GNUstep/Foundation/NSAppleEventManager.h:

/usr/include/GNUstep/Foundation/NSAppleScript.h:

/usr/include/GNUstep/Foundation/NSArchiver.h:

/usr/include/GNUstep/Foundation/NSCoder.h:

/usr/include/GNUstep/Foundation/NSSet.h:

/usr/include/GNUstep/Foundation/NSEnumerator.h:

/usr/include/GNUstep/Foundation/NSArray.h:

/usr/include/GNUstep/GNUstepBase/NSArray+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSAttributedString.h:

/usr/include/GNUstep/Foundation/NSDictionary.h:

/usr/include/GNUstep/GNUstepBase/NSAttributedString+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSAutoreleasePool.h:

/usr/include/GNUstep/Foundation/NSBackgroundActivityScheduler.h:

/usr/include/GNUstep/Foundation/NSBundle.h:

/usr/include/GNUstep/GNUstepBase/NSBundle+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSByteOrder.h:

/usr/include/GNUstep/Foundation/NSCache.h:

/usr/include/GNUstep/Foundation/NSCalendar.h:

/usr/include/GNUstep/Foundation/NSCalendarDate.h:

/usr/include/GNUstep/GNUstepBase/NSCalendarDate+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSCharacterSet.h:

/usr/include/GNUstep/Foundation/NSClassDescription.h:

/usr/include/GNUstep/Foundation/NSException.h:

/usr/include/GNUstep/Foundation/NSComparisonPredicate.h:

/usr/include/GNUstep/Foundation/NSExpression.h:

/usr/include/GNUstep/Foundation/NSPredicate.h:

/usr/include/GNUstep/Foundation/NSCompoundPredicate.h:

/usr/include/GNUstep/Foundation/NSConnection.h:

/usr/include/GNUstep/Foundation/NSTimer.h:

/usr/include/GNUstep/Foundation/NSRunLoop.h:

/usr/include/GNUstep/Foundation/NSMapTable.h:

/usr/include/GNUstep/Foundation/NSPointerFunctions.h:

/usr/include/GNUstep/Foundation/NSData.h:

/usr/include/GNUstep/Foundation/NSSerialization.h:

/usr/include/GNUstep/GNUstepBase/NSData+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSDateComponentsFormatter.h:

/usr/include/GNUstep/Foundation/NSFormatter.h:

/usr/include/GNUstep/Foundation/NSDateFormatter.h:

/usr/include/GNUstep/Foundation/NSDateInterval.h:

/usr/include/GNUstep/Foundation/NSDateIntervalFormatter.h:

/usr/include/GNUstep/Foundation/NSDecimalNumber.h:

/usr/include/GNUstep/Foundation/NSDecimal.h:

/usr/include/GNUstep/Foundation/NSValue.h:

/usr/include/GNUstep/GNUstepBase/NSNumber+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSDistantObject.h:

/usr/include/GNUstep/Foundation/NSProxy.h:

/usr/include/GNUstep/Foundation/NSDistributedLock.h:

/usr/include/GNUstep/Foundation/NSDistributedNotificationCenter.h:

/usr/include/GNUstep/Foundation/NSLock.h:

/usr/include/GNUstep/GNUstepBase/NSLock+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSNotification.h:

/usr/include/GNUstep/Foundation/NSEnergyFormatter.h:

/usr/include/GNUstep/Foundation/NSError.h:

/usr/include/GNUstep/Foundation/NSExtensionContext.h:

/usr/include/GNUstep/Foundation/NSExtensionItem.h:

/usr/include/GNUstep/Foundation/NSExtensionRequestHandling.h:

/usr/include/GNUstep/Foundation/NSFileCoordinator.h:

/usr/include/GNUstep/Foundation/NSURL.h:

/usr/include/GNUstep/Foundation/NSURLHandle.h:

/usr/include/GNUstep/GNUstepBase/NSURL+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSFileHandle.h:

/usr/include/GNUstep/GNUstepBase/NSFileHandle+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSFileManager.h:

/usr/include/GNUstep/Foundation/NSPathUtilities.h:

/usr/include/GNUstep/Foundation/NSFilePresenter.h:

/usr/include/GNUstep/Foundation/NSFileVersion.h:

/usr/include/GNUstep/Foundation/NSFileWrapper.h:

/usr/include/GNUstep/Foundation/NSGarbageCollector.h:

/usr/include/GNUstep/Foundation/NSHashTable.h:

/usr/include/GNUstep/Foundation/NSHFSFileTypes.h:

/usr/include/GNUstep/Foundation/NSHost.h:

/usr/include/GNUstep/Foundation/NSHTTPCookie.h:

/usr/include/GNUstep/Foundation/NSHTTPCookieStorage.h:

/usr/include/GNUstep/Foundation/NSIndexPath.h:

/usr/include/GNUstep/Foundation/NSIndexSet.h:

/usr/include/GNUstep/Foundation/NSInvocation.h:

/usr/include/GNUstep/Foundation/NSMethodSignature.h:

/usr/include/GNUstep/Foundation/NSInvocationOperation.h:

/usr/include/GNUstep/Foundation/NSOperation.h:

/usr/include/GNUstep/Foundation/NSISO8601DateFormatter.h:

/usr/include/GNUstep/Foundation/NSItemProvider.h:

/usr/include/GNUstep/Foundation/NSItemProviderReadingWriting.h:

/usr/include/GNUstep/Foundation/NSJSONSerialization.h:

/usr/include/GNUstep/Foundation/NSKeyedArchiver.h:

/usr/include/GNUstep/Foundation/NSPropertyList.h:

/usr/include/GNUstep/Foundation/NSKeyValueCoding.h:

/usr/include/GNUstep/Foundation/NSKeyValueObserving.h:

/usr/include/GNUstep/Foundation/NSLengthFormatter.h:

/usr/include/GNUstep/Foundation/NSLinguisticTagger.h:

/usr/include/GNUstep/Foundation/NSLocale.h:

/usr/include/GNUstep/Foundation/NSMeasurement.h:

/usr/include/GNUstep/Foundation/NSMeasurementFormatter.h:

/usr/include/GNUstep/Foundation/NSMetadata.h:

/usr/include/GNUstep/Foundation/NSMetadataAttributes.h:

/usr/include/GNUstep/Foundation/NSNotificationQueue.h:

/usr/include/GNUstep/Foundation/NSNetServices.h:

/usr/include/GNUstep/GNUstepBase/NSNetServices+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSNull.h:

/usr/include/GNUstep/Foundation/NSNumberFormatter.h:

/usr/include/GNUstep/Foundation/NSObjectScripting.h:

/usr/include/GNUstep/Foundation/NSOrderedSet.h:

/usr/include/GNUstep/Foundation/NSOrthography.h:

/usr/include/GNUstep/Foundation/NSPersonNameComponents.h:

/usr/include/GNUstep/Foundation/NSPersonNameComponentsFormatter.h:

/usr/include/GNUstep/Foundation/NSPointerArray.h:

/usr/include/GNUstep/Foundation/NSPortCoder.h:

/usr/include/GNUstep/Foundation/NSPortMessage.h:

/usr/include/GNUstep/Foundation/NSPort.h:

/usr/include/GNUstep/Foundation/NSPortNameServer.h:

/usr/include/GNUstep/Foundation/NSProgress.h:

/usr/include/GNUstep/Foundation/NSProtocolChecker.h:

/usr/include/GNUstep/Foundation/NSRegularExpression.h:

/usr/include/GNUstep/Foundation/NSScanner.h:

/usr/include/GNUstep/Foundation/NSScriptClassDescription.h:

/usr/include/GNUstep/Foundation/NSScriptCoercionHandler.h:

/usr/include/GNUstep/Foundation/NSScriptCommand.h:

/usr/include/GNUstep/Foundation/NSScriptCommandDescription.h:

/usr/include/GNUstep/Foundation/NSScriptExecutionContext.h:

/usr/include/GNUstep/Foundation/NSScriptKeyValueCoding.h:

/usr/include/GNUstep/Foundation/NSScriptObjectSpecifiers.h:

/usr/include/GNUstep/Foundation/NSScriptStandardSuiteCommands.h:

/usr/include/GNUstep/Foundation/NSScriptSuiteRegistry.h:

/usr/include/GNUstep/Foundation/NSScriptWhoseTests.h:

/usr/include/GNUstep/Foundation/NSSortDescriptor.h:

/usr/include/GNUstep/Foundation/NSSpellServer.h:

/usr/include/GNUstep/Foundation/NSStream.h:

/usr/include/GNUstep/GNUstepBase/NSStream+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSTask.h:

/usr/include/GNUstep/GNUstepBase/NSTask+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSTextCheckingResult.h:

/usr/include/GNUstep/Foundation/NSThread.h:

/usr/include/GNUstep/GNUstepBase/NSThread+GNUstepBase.h:

/usr/include/GNUstep/Foundation/NSTimeZone.h:

/usr/include/GNUstep/Foundation/NSUbiquitousKeyValueStore.h:

/usr/include/GNUstep/Foundation/NSUndoManager.h:

/usr/include/GNUstep/Foundation/NSUnit.h:

/usr/include/GNUstep/Foundation/NSUserActivity.h:

/usr/include/GNUstep/Foundation/NSURLAuthenticationChallenge.h:

/usr/include/GNUstep/Foundation/NSURLCache.h:

/usr/include/GNUstep/Foundation/NSURLConnection.h:

/usr/include/GNUstep/Foundation/NSURLCredential.h:

/usr/include/GNUstep/Foundation/NSURLCredentialStorage.h:

/usr/include/GNUstep/Foundation/NSURLDownload.h:

/usr/include/GNUstep/Foundation/NSURLError.h:

/usr/include/GNUstep/Foundation/NSURLProtectionSpace.h:

/usr/include/GNUstep/Foundation/NSURLProtocol.h:

/usr/include/GNUstep/Foundation/NSURLRequest.h:

/usr/include/GNUstep/Foundation/NSURLResponse.h:

/usr/include/GNUstep/Foundation/NSURLSession.h:

/usr/include/GNUstep/Foundation/NSUserDefaults.h:

/usr/include/GNUstep/Foundation/NSUserNotification.h:

/usr/include/GNUstep/Foundation/NSUUID.h:

/usr/include/GNUstep/Foundation/NSValueTransformer.h:

/usr/include/GNUstep/Foundation/NSXMLDocument.h:

/usr/include/GNUstep/Foundation/NSXMLNode.h:

/usr/include/GNUstep/Foundation/NSXMLNodeOptions.h:

/usr/include/GNUstep/Foundation/NSXMLDTD.h:

/usr/include/GNUstep/Foundation/NSXMLDTDNode.h:

/usr/include/GNUstep/Foundation/NSXMLElement.h:

/usr/include/GNUstep/Foundation/NSXMLParser.h:

/usr/include/GNUstep/Foundation/NSXPCConnection.h:
